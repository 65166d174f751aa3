#pragma once
#include <string>

/** Puts a port's name into the extension's settings file, before the extension reads it. Nothing else in the file
    changes; a missing or unreadable file is made new, without assignments. The file is whole at any moment.

    port      raw bytes, as the system names the device.
    Results   false, and a text that says why: the folder or the file can't be written, or the name can't be kept in it. */
bool putPortIntoSettings(const std::string& port, std::string& error);

/** The same on the text of a file; empty: the text isn't a settings file. */
std::string settingsWithPort(const std::string& settings, const std::string& port);
