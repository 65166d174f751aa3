// The reader on expat: it tells what expat tells when it is fed the same pieces, and agrees about the end.
#include "base/source/fobject.h"
#include "storage/fmstream.h"
#include "storage/fxmlparser2.h"
#include <algorithm>
#include <expat.h>
#include <string>

using namespace Tessarine;

namespace {
constexpr size_t kPiece = 32768;

void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

/** Both sides write the same words. */
struct Notes {
    void start(const char* name, const char** attributes) {
        text += std::string("<") + name;
        for (; *attributes; attributes += 2)
            text += std::string(" ") + attributes[0] + "=" + attributes[1];
    }
    void end(const char* name) { text += std::string("</") + name; }
    void data(const char* bytes, int length) { text.append("[").append(bytes, size_t(length)); }
    void comment(const char* bytes) { text += std::string("{") + bytes; }

    std::string text;
};

class Handler : public XmlHandler {
public:
    void startTag(INewXmlParser*, const char* name, const char** attributes) override { notes.start(name, attributes); }
    void endTag(INewXmlParser*, const char* name) override { notes.end(name); }
    void charData(INewXmlParser*, const char* data, int32_t length) override { notes.data(data, length); }
    void comment(INewXmlParser*, const char* text) override { notes.comment(text); }

    Notes notes;
};

Notes& notesOf(void* user) {
    return *static_cast<Notes*>(user);
}

bool readBare(const uint8_t* data, size_t size, Notes& notes) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &notes);
    XML_SetElementHandler(
        parser, [](void* user, const char* name, const char** attributes) { notesOf(user).start(name, attributes); },
        [](void* user, const char* name) { notesOf(user).end(name); });
    XML_SetCharacterDataHandler(parser, [](void* user, const char* text, int size) { notesOf(user).data(text, size); });
    XML_SetCommentHandler(parser, [](void* user, const char* text) { notesOf(user).comment(text); });
    XML_Status status = XML_STATUS_OK;
    for (size_t at = 0, count = 1; count > 0 && status == XML_STATUS_OK; at += count) {
        count = std::min(size - at, kPiece);
        status = XML_Parse(parser, reinterpret_cast<const char*>(data + at), int(count), count == 0);
    }
    const bool read = status == XML_STATUS_OK || XML_GetErrorCode(parser) == XML_ERROR_JUNK_AFTER_DOC_ELEMENT;
    XML_ParserFree(parser);
    return read;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FMemoryStream stream(const_cast<uint8_t*>(data), int32_t(size));
    Handler handler;
    Notes bare;
    const bool read = FXmlParser2(&handler, nullptr).process(&stream);
    demand(read == readBare(data, size, bare));
    demand(handler.notes.text == bare.text);
    return 0;
}
