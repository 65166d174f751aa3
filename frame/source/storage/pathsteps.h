#pragma once
#include "storage/fpath.h"
#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

/** Paths as the names on the way. The texts are borrowed. */

namespace Tessarine {

using PathSteps = std::vector<std::u16string_view>;

inline FString fullTextOf(const FPath& path) {
    FString text;
    path.getFullPath(text);
    return text;
}

/** A name that leads into its folder and nowhere else. */
inline bool isPlainStep(std::u16string_view name) {
    return !name.empty() && name != u"." && name != u".." && name.find(u'/') == name.npos;
}

/** Takes the next name off a text; empty between two "/". */
inline std::u16string_view takeStep(std::u16string_view& text) {
    const std::u16string_view step = text.substr(0, text.find(u'/'));
    text.remove_prefix(std::min(text.size(), step.size() + 1));
    return step;
}

/** The names between the "/", without empty ones and ".". */
inline PathSteps pathSteps(std::u16string_view text) {
    PathSteps steps;
    while (!text.empty())
        if (const std::u16string_view step = takeStep(text); !step.empty() && step != u".")
            steps.push_back(step);
    return steps;
}

/** The same with ".." resolved, which at the top stays there. */
inline PathSteps resolvedSteps(std::u16string_view text) {
    PathSteps steps = pathSteps(text);
    size_t kept = 0;
    for (const std::u16string_view step : steps) {
        if (step != u"..")
            steps[kept++] = step;
        else if (kept > 0)
            --kept;
    }
    steps.resize(kept);
    return steps;
}

/** There is nothing to resolve: plain names with one "/" between them. */
inline bool isResolved(std::u16string_view text) {
    const bool ends = text.empty() || text.back() == u'/';
    while (!text.empty())
        if (!isPlainStep(takeStep(text)))
            return false;
    return !ends;
}

/** Adds the names to text, with "/" between them. */
inline void appendSteps(FString& text, std::span<const std::u16string_view> steps) {
    for (size_t i = 0; i < steps.size(); ++i) {
        if (i > 0)
            text += u'/';
        text.append(steps[i].data(), int32_t(steps[i].size()));
    }
}

}  // namespace Tessarine
