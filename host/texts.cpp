#include "host/texts.h"

using namespace Tessarine;

std::string utf8Of(const ConstString& text) {
    String copy(text);
    return copy.isEmpty() || !copy.toMultiByte(kCodePageUTF8) ? std::string() : std::string(copy.text8());
}

bool wideOf(const std::string& text, String& wide) {
    wide = String();
    return wide.fromUTF8(text.c_str());
}
