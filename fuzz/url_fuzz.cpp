// URLs as text: of an input's two texts (twotexts.h) one is a URL, the other a name.
#include "demand.h"
#include "storage/furl.h"
#include "storage/furlhandler.h"
#include "twotexts.h"
#include <algorithm>

using namespace Tessarine;

namespace {
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
    if (size < TwoTexts::kLeast)
        return 0;
    const auto [text, name, kind] = TwoTexts(data, size);
    checkCoding(text);
    FUrl url(u"http://old/x");
    if (!url.setUrl(text.c_str())) {
        demand(textOf(url) == u"http://old/x");
        return 0;
    }
    checkParts(url);
    checkWay(url, name, kind);
    checkRequest(url);
    checkLogin(url, name);
    return 0;
}
