// The document tree: what was loaded can be saved and loaded again, and comes to rest; indenting comes to rest as well.
#include "storage/xmldocument.h"
#include "storage/fmstream.h"
#include <string>

using namespace Tessarine;

namespace {
void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

bool load(Xml::Document& document, const std::string& text) {
    FMemoryStream stream(const_cast<char*>(text.data()), int32_t(text.size()));
    return document.load(&stream);
}

std::string saved(const Xml::Document& document, bool reformat) {
    FMemoryStream stream;
    demand(document.save(&stream, reformat));
    return {stream.getData(), size_t(stream.getSize())};
}

/** Line ends in texts become line feeds, those in attributes blanks; after that nothing changes. */
std::string roundTrip(const std::string& text, bool reformat) {
    Xml::Document document;
    demand(load(document, text));
    return saved(document, reformat);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Xml::Document document;
    if (!load(document, std::string(reinterpret_cast<const char*>(data), size))) {
        demand(!document.getRoot());
        return 0;
    }
    const std::string once = roundTrip(saved(document, false), false);
    demand(roundTrip(once, false) == once);
    saved(document, true);
    const std::string indented = saved(document, true);
    demand(saved(document, true) == indented);
    return 0;
}
