#pragma once
#include <fstream>
#include <string>

#ifdef TESSARINE_SANITIZED
constexpr bool kSanitized = true;  // a module stays mapped, and the heap is another one
#else
constexpr bool kSanitized = false;
#endif

/** Whether a file of such a name is in the memory of the program. */
inline bool isMapped(const std::string& name) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(name) != std::string::npos)
            return true;
    return false;
}
