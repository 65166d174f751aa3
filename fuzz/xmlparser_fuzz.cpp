// The lenient XML reader: the same is told whether it reads ahead or byte by byte, in pieces that keep their sizes. An input is
// a byte of options and the text; tags whose names begin with "p" and "s" are read or skipped from inside.
#include "storage/fmstream.h"
#include "storage/fxmlparser.h"
#include <cstring>
#include <string>

using namespace Tessarine;

namespace {
void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

class Reader : public FXmlParser {
public:
    Reader(FStream* source, bool buffered, int32_t wanted) : FXmlParser(source, buffered) { options = wanted; }

    bool startTag(const char* name, CmContainer& attributes, bool empty, void* userData) override {
        note("<", name);
        for (int32_t i = 0; i < attributes.total(); ++i) {
            auto* attribute = static_cast<FXmlAttribute*>(attributes.at(i));
            demand(attribute->name.length() <= 47 && attribute->value.length() <= 2047);
            note(" ", attribute->name.text8());
            note("=", attribute->value.text8());
        }
        note(empty ? "/>" : ">", userData ? "!" : "");
        if (!empty && name[0] == 'p')
            return process(this);
        return empty || name[0] != 's' || skip();
    }
    bool endTag(const char* name, void*) override { return note("</", name); }
    void gotData(void* data, uint32_t size, void*) override {
        demand(size <= 4096);
        note("[", std::string(static_cast<char*>(data), size));
        FXmlTextFormat<4096> format(int32_t(size & 3));
        const int32_t shown = format.format(data, int32_t(size));
        demand(shown >= 0 && uint32_t(shown) <= size);
        note("|", std::string(format.text, size_t(shown)));
    }
    void gotComment(const char* text, void*, bool last) override {
        demand(std::strlen(text) <= 4094 && !std::strpbrk(text, "<-"));
        note(last ? "{" : "{+", text);
    }
    void end(bool succeeded) {
        demand(succeeded == (errorCode == kErrorNone));
        note("error ", std::to_string(errorCode) + " in line " + std::to_string(lineNumber) + " of " +
                           std::to_string(encoding) + ", open " + std::to_string(tagStack.total()));
    }

    std::string heard;

private:
    bool note(const char* what, const std::string& text) {
        heard += what + text;
        return heard.size() < 1u << 20;
    }
};

std::string told(const uint8_t* data, size_t size, bool buffered) {
    FMemoryStream stream(const_cast<uint8_t*>(data + 1), int32_t(size - 1));
    Reader reader(&stream, buffered, data[0] & 0x7F);
    reader.end(reader.process(nullptr));
    return reader.heard;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 1)
        demand(told(data, size, true) == told(data, size, false));
    return 0;
}
