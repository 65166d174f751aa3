#include "base/utranslatedstring.h"
#include "base/source/fobject.h"
#include "base/source/fstring.h"
#include "pluginterfaces/base/ibstream.h"
#include "storage/fxmlparser2.h"
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace Tessarine {
namespace {
/** Keys that aren't what an English user reads. */
constexpr std::pair<std::string_view, const char*> kEnglishTexts[] = {
    {"Copy{{Noun}}", "Copy"},
};

using Table = std::unordered_map<std::string, std::u16string>;

/** The texts of all tables that ever were, and which of them count now. */
struct Translations {
    std::unordered_set<std::u16string> texts;
    std::unordered_map<std::string, const tchar*> byKey;
};

Translations& translations() {
    static Translations theTranslations;
    return theTranslations;
}

/** Collects a table from its document. */
class TableHandler : public FObject, public INewXmlHandler {
public:
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<INewXmlHandler>(this, iid, obj) ? int32_t(kResultOk) : FObject::queryInterface(iid, obj);
    }
    void startTag(INewXmlParser* parser, const char* name, const char** attributes) override {
        if (!isTable) {
            isTable = std::string_view(name) == "translations";
            if (!isTable)
                parser->stop();
            return;
        }
        const char* itsKey = XmlAttributeAccessor(attributes).lookupValue("key");
        collects = itsKey && std::string_view(name) == "text";
        key = collects ? itsKey : "";
        utf8.clear();
    }
    void endTag(INewXmlParser*, const char*) override {
        String text;
        if (collects && text.fromUTF8(utf8.c_str()))
            table[key] = text.text16();
        collects = false;
    }
    void charData(INewXmlParser*, const char* data, int32_t length) override {
        if (collects)
            utf8.append(data, size_t(length));
    }
    void comment(INewXmlParser*, const char*) override {}

    bool isTable = false;
    Table table;

private:
    bool collects = false;
    std::string key, utf8;
};
}  // namespace

const tchar* UTranslatedString::text() const {
    const auto found = translations().byKey.find(key);
    if (found != translations().byKey.end())
        return found->second;
    for (const auto& [itsKey, itsText] : kEnglishTexts)
        if (itsKey == key)
            return ConstStringTable::instance()->getString(itsText);
    return ConstStringTable::instance()->getString(english);
}

bool UTranslatedString::loadTable(IBStream* stream) {
    const OPtr<TableHandler> handler(new TableHandler);
    if (!FXmlParser2(handler.get()).process(stream) || !handler->isTable)
        return false;
    forgetTable();
    for (const auto& [key, text] : handler->table)
        translations().byKey[key] = translations().texts.insert(text).first->c_str();
    return true;
}

void UTranslatedString::forgetTable() {
    translations().byKey.clear();
}

}  // namespace Tessarine
