#include "tools/srfpack/commands.h"
#include "tools/srfpack/names.h"
#include "tools/words/answer.h"
#include <csignal>
#include <cstdio>

namespace {
int fail(const std::string& why, int status) {
    std::fprintf(stderr, "srfpack: %s\n", why.c_str());
    return status;
}
}  // namespace

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    std::string error;
    const auto options = SrfPack::readOptions(arguments, error);
    if (!options)
        return fail(SrfPack::printable(error), 2);
    std::signal(SIGXFSZ, SIG_IGN);  // a file that gets too large is an error as any other
    error = options->answer.empty() ? SrfPack::run(*options) : printAnswer(options->answer);
    return error.empty() ? 0 : fail(error, 1);
}
