// URLs as text. An input is a byte of options, a byte that says how long the first text is, and two texts, a URL and a name:
// bytes of UTF-8, or 16-bit units with kAnyUnits, half surrogate pairs among them.
#include "demand.h"
#include "storage/furl.h"
#include "storage/furlhandler.h"
#include "unitsof.h"
#include <algorithm>

using namespace Tessarine;

namespace {
enum Options : uint8_t { kAnyUnits = 1, kAsFolder = 2 };

std::u16string textOf(const FUrl& url) {
    FString text;
    url.getUrl(text);
    return text.text16();
}

void checkParts(const FUrl& url) {
    FUrl again;
    demand(again.setUrl(textOf(url).c_str()) && textOf(again) == textOf(url));
    demand(again.getFile() == url.getFile() && again.getHost() == url.getHost() && again.getPort() == url.getPort() &&
           again.getUser() == url.getUser() && again.getPassword() == url.getPassword());
}

void checkWay(FUrl url, const std::u16string& name, int32_t kind) {
    url.descend(name.c_str(), kind);
    const std::u16string text = textOf(url);
    for (auto levels = std::ranges::count(text, u'/') + 1; url.ascend(); --levels)
        demand(levels > 0);
    demand(url.isRootDir());
}

/** What is asked for can't end its line, and stays the same when it is asked for again. */
void checkRequest(FUrl url) {
    FString file, again;
    url.getRequestFile(file);
    const std::u16string text(file.text16());
    demand(std::ranges::all_of(text, [](char16_t c) { return c > u' ' && c < 0x7F && c != u'#'; }));
    url.setFile(text.c_str());
    url.getRequestFile(again);
    demand(again == file);
}

void checkLogin(FUrl url, const std::u16string& text) {
    url.setLogin(text.c_str(), text.c_str());
    checkParts(url);
    FString user(url.getUser());
    demand(user.isAsciiString() && user == url.getPassword());
    demand(hasHalfPairs(text) || (FUrl::urlDecode(user) && user.text16() == text));
}

void checkCoding(const std::u16string& text) {
    FString coded(text.c_str()), decoded(text.c_str());
    FUrl::urlEncode(coded);
    demand(coded.isAsciiString());
    demand(FUrl::urlDecode(coded));
    demand(hasHalfPairs(text) || std::u16string(coded.text16()) == text);
    FUrl::urlDecode(decoded);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const Bytes bytes(data + 2, size - 2);
    const size_t length = std::min<size_t>(data[1], bytes.size());
    const bool any = data[0] & kAnyUnits;
    const std::u16string text = unitsOf(bytes.substr(0, length), any), name = unitsOf(bytes.substr(length), any);
    checkCoding(text);
    FUrl url(u"http://old/x");
    if (!url.setUrl(text.c_str())) {
        demand(textOf(url) == u"http://old/x");
        return 0;
    }
    checkParts(url);
    checkWay(url, name, data[0] & kAsFolder ? kFolderPath : kFilePath);
    checkRequest(url);
    checkLogin(url, name);
    return 0;
}
