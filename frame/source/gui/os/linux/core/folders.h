#pragma once
#include "gui/hooks.h"

namespace Tessarine {

/** The folder, absolute and without a closing "/". false: the environment names none. Nothing is created. */
bool findPlatformFolder(PlatformFolder kind, String& path);
/** The file name of the running program, without its folder. */
bool findProgramName(String& name);

}  // namespace Tessarine
