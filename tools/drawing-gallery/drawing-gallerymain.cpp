#include "graphics/platformgraphics.h"
#include "gui/drawing/ubitmap.h"
#include "storage/fpath.h"
#include "tools/drawing-gallery/page.h"
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace {
using namespace Tessarine;
using namespace Tessarine::Gallery;

constexpr char kHelp[] = R"(drawing-gallery - pictures of what the framework draws

usage: drawing-gallery [--out FOLDER] [--scale 1|2] [PAGE ...]
       drawing-gallery --list | --help

  --out FOLDER   where the PNG files go; the current folder without it. It must be there
  --scale 1|2    pixels to a unit; files of 2 end with "@2x"
  --list         prints the names of the pages
  PAGE           only these

Exit status: 0 when done, 1 when a picture can't be made or written, 2 for bad usage.
)";

struct Options {
    std::string folder = ".";
    int32_t scale = 1;
    std::vector<std::string> pages;  // empty: all
};

std::optional<Options> readOptions(const std::vector<std::string>& words) {
    Options options;
    for (size_t index = 0; index < words.size(); ++index) {
        const std::string& word = words[index];
        const bool hasValue = index + 1 < words.size();
        if (word == "--out" && hasValue && !words[index + 1].empty())
            options.folder = words[++index];
        else if (word == "--scale" && hasValue && (words[index + 1] == "1" || words[index + 1] == "2"))
            options.scale = words[++index] == "2" ? 2 : 1;
        else if (word.starts_with("-"))
            return std::nullopt;
        else
            options.pages.push_back(word);
    }
    const auto isKnown = [](const std::string& name) {
        return std::ranges::find(allPages(), name, &Page::name) != allPages().end();
    };
    return std::ranges::all_of(options.pages, isKnown) ? std::optional(options) : std::nullopt;
}

bool write(Graphics::IBitmap* bitmap, const std::string& name) {
    String text;
    FPath path;
    if (!text.fromUTF8(name.c_str()))
        return false;
    path.fromString(text.text16(), kFilePath);
    return OPtr<UBitmap>(new UBitmap(bitmap))->saveToFile(&path, nullptr);
}

int fail(const std::string& why) {
    std::fprintf(stderr, "drawing-gallery: %s\n", why.c_str());
    return 1;
}

int run(const Options& options) {
    installTessarinePlatformGraphics();
    for (const Page& page : allPages()) {
        const bool isWanted =
            options.pages.empty() || std::ranges::find(options.pages, page.name) != options.pages.end();
        const std::string name = options.folder + "/" + page.name + (options.scale == 2 ? "@2x.png" : ".png");
        if (!isWanted)
            continue;
        if (!write(pictureOf(page, options.scale), name))
            return fail(name + ": can't be made or written");
    }
    return 0;
}
}  // namespace

int main(int count, char** words) {
    const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
    if (arguments == std::vector<std::string>{"--help"})
        return std::fputs(kHelp, stdout) < 0;
    if (arguments == std::vector<std::string>{"--list"}) {
        for (const Page& page : allPages())
            std::puts(page.name);
        return 0;
    }
    const auto options = readOptions(arguments);
    if (!options) {
        std::fputs("drawing-gallery: bad usage; try --help\n", stderr);
        return 2;
    }
    return run(*options);
}
