#pragma once
#include "base/source/fstring.h"
#include <string>

/** Empty for a text that can't be told in UTF-8. */
std::string utf8Of(const Tessarine::ConstString& text);
/** In 16 bits; false, and nothing in it: the text is malformed. */
bool wideOf(const std::string& text, Tessarine::String& wide);
