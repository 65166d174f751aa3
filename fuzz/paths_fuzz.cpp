// Paths as text, from the two texts of an input (twotexts.h).
#include "demand.h"
#include "storage/ffilesystem.h"
#include "storage/fvfilesystem.h"
#include "twotexts.h"
#include <algorithm>
#include <string>

using namespace Tessarine;

namespace {
size_t countOf(const std::u16string& text, char16_t c) {
    return size_t(std::ranges::count(text, c));
}

/** Two "/" in a row, or one at the end, of which a path keeps none or not all. */
bool isTidy(const std::u16string& text) {
    return text.find(u"//") == text.npos && (text.size() < 2 || text.back() != u'/');
}

void checkPath(const std::u16string& text, const std::u16string& name, int32_t kind) {
    FNPath path(text.c_str(), kind);
    demand(textOf(FNPath(textOf(path).c_str(), kind)) == textOf(path));
    demand(!isTidy(text) || textOf(path) == text);
    const int32_t extension = path.getExtensionIndex(false);
    demand(extension == -1 || (extension > 1 && path.getName()[extension - 1] == u'.'));
    FNPath below(path);
    below.descend(name.c_str(), kind);
    if (isTidy(text) && isTidy(name) && !path.isEmpty() && !name.empty() && name[0] != u'/') {
        demand(below.isInDir(&path));
        for (size_t level = 0; level <= countOf(name, u'/'); ++level)
            demand(below.ascend());
        demand(textOf(below) == textOf(path));
    }
    size_t levels = 0;
    while (path.ascend())
        ++levels;
    demand(levels <= countOf(text, u'/'));
}

void checkWays(const std::u16string& from, const std::u16string& to) {
    const FNPath base((u"/" + from).c_str(), kFolderPath), target((u"/" + to).c_str(), kFilePath);
    FNPath way;
    if (way.assignRelative(&base, &target))
        demand(textOf(way.createAbsolutePath(&base)) == textOf(target.createAbsolutePath(nullptr)));
    else
        demand(from.find(u"..") != from.npos);
    demand(FPathCompare::compareTreeStyle(from.c_str(), to.c_str()) ==
           -FPathCompare::compareTreeStyle(to.c_str(), from.c_str()));
}

void checkRoot(const std::u16string& text) {
    static const FNPath root(u"/usr/share", kFolderPath);
    static FVFileSystem disk(&root);
    FPath path;
    path.fromString(text.c_str(), kFilePath);
    const FPath real = disk.translatePath(&path);
    if (path.isAbsolute()) {
        demand(real == path);
        demand(!disk.fileExists(&path) ||
               textOf(FNPath(text.c_str(), kFilePath).createAbsolutePath(nullptr)).starts_with(u"/usr/share/"));
        return;
    }
    demand(real == root || real.isInDir(&root));
    demand(FNPath(textOf(real).c_str(), kFilePath).createAbsolutePath(nullptr) == real);
    demand(disk.translatePath(&static_cast<const FPath&>(disk.reverseTranslate(&real))) == real);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < TwoTexts::kLeast)
        return 0;
    const auto [text, name, kind] = TwoTexts(data, size);
    checkPath(text, name, kind);
    checkWays(text, name);
    checkRoot(text);
    return 0;
}
