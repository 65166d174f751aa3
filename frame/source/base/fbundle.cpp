#include "base/fbundle.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Tessarine {

constinit BundleHooks gBundleHooks;

bool FBundleFacts::runsHere() const {
    const char* ours = gBundleHooks.architecture ? gBundleHooks.architecture() : nullptr;
    const auto isOurs = [ours](const char* each) { return std::strcmp(each, ours) == 0; };
    return ours && std::ranges::any_of(architectures, isOurs);
}

void keepForGood(FUnknown* object) {
    static auto* const kept = new std::vector<FUnknown*>;  // is there to the very end
    if (object)
        kept->push_back(object);
}

void reportLoadFailure(const std::string& text) {
    if (gBundleHooks.report)
        gBundleHooks.report(text);
    else
        std::fprintf(stderr, "%s\n", text.c_str());
}

}  // namespace Tessarine
