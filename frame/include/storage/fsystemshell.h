#pragma once
#include "base/source/fstring.h"
#include <span>

namespace Tessarine {
class FPath;

/** Starts other programs, and what the desktop opens things with. They run on by themselves; nobody waits for them.
    false: nothing could be started, or an argument is empty or can't be expressed. */
namespace FSystemShell {
bool executeURL(const ConstString& url);
/** Opens the folder of a file, or the folder itself, in the desktop's file browser. */
bool showInBrowser(const FPath& path);
/** A program, found by its name as a shell does, with arguments that no shell reads. */
bool execute(const FPath& program, std::span<const FString> arguments = {});
}  // namespace FSystemShell

}  // namespace Tessarine
