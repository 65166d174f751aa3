#pragma once
#include <string>

namespace Tessarine {

/** The machine that a shared object is for, by its headers: a name that stays, such as "x86_64". Null: it is none, or of
    this machine and cut off, which the loader would not survive. */
const char* machineOfObject(const std::string& file);
/** Of the running program. */
const char* machineOfProgram();

}  // namespace Tessarine
