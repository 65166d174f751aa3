#include "source/TALV_Extension/TALV_Setup.h"
#include "base/source/fstring.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include "storage/fasidefile.h"
#include "storage/fbstream.h"
#include "storage/ffilesystem.h"
#include "storage/fpath.h"
#include "storage/fxmlparser2.h"
#include <set>
#include <string>

using namespace Tessarine;

namespace TALV {
namespace {
constexpr const tchar* k_fileName = u"Setup.xml";
constexpr const char* k_rootTag = "VOREN-HA-Remote";
constexpr const char* k_portTag = "ComPortName";
constexpr const char* k_connectionTag = "DevId-Ch";
constexpr const char* k_textAttribute = "str";
constexpr const char* k_idAttribute = "id";
constexpr const char* k_channelAttribute = "ch";
constexpr int64_t k_maxDevId = 255;

FNPath setupPath() {
    return FNPath(k_fileName, kUserFolder, kFilePath, nullptr, true);
}

/** The parser's text as 16-bit text. The table of constant strings goes by address, so that it must be given a copy
    that stays where it is, once for each text. */
const tchar* constantText(const char* text) {
    static std::set<std::string> copies;
    return ConstStringTable::instance()->getString(copies.insert(text).first->c_str());
}

/** The number that the attribute begins with; 0 when there is none. */
int64_t numberOf(const XmlAttributeAccessor& attributes, const char* name) {
    int64_t number = 0;
    if (const char* text = attributes.lookupValue(name))
        ConstString(text).scanInt64(number, 0, false);
    return number;
}
}  // namespace

int32_t TALV_Setup::queryInterface(const char* iid, void** obj) {
    if (answerInterface<FUnknown>(this, iid, obj) || answerInterface<INewXmlHandler>(this, iid, obj))
        return kResultOk;
    return noInterface(obj);
}

uint32_t TALV_Setup::addRef() {
    return uint32_t(atomicAdd(refCount, 1));
}

uint32_t TALV_Setup::release() {
    const int32_t left = atomicAdd(refCount, -1);
    if (left == 0)
        delete this;
    return uint32_t(left);
}

void TALV_Setup::startTag(INewXmlParser* parser, const char* name, const char** attributes) {
    if (!parser || !name || !attributes || !dataManager)
        return;
    if (std::strcmp(name, k_portTag) == 0)
        takePortName(attributes);
    else if (std::strcmp(name, k_connectionTag) == 0)
        takeConnection(attributes);
}

void TALV_Setup::save() {
    const FNPath path = setupPath();
    if (path.isEmpty())
        return;
    FAsideFile file(gFileSystem, path);
    if (!file.getStream())
        return;
    write(file.getStream());
    file.commit();
}

void TALV_Setup::load() {
    FNPath path = setupPath();
    FStream* stream = gFileSystem->openFile(&path, kOpenRead);
    if (!stream)
        return;
    FXmlParser2 parser(this, nullptr);
    parser.process(stream);
    gFileSystem->closeFile(stream);
}

void TALV_Setup::writeStrValue(const char* tag, const char* text, XmlWriter2& writer) {
    writer.beginStartTag(tag);
    writer.appendAttribute8(k_textAttribute, text);
    writer.finishStartTag(kXmlStartTagEmpty);
}

void TALV_Setup::writeDevIdChValue(const char* tag, int32_t id, int32_t channel, XmlWriter2& writer) {
    writer.beginStartTag(tag);
    writer.appendIntAttribute(k_idAttribute, id);
    writer.appendIntAttribute(k_channelAttribute, channel);
    writer.finishStartTag(kXmlStartTagEmpty);
}

void TALV_Setup::write(IBStream* stream) {
    XmlWriter2 writer(stream);
    writer.writeIntro(true);
    writer.writeStartTag(k_rootTag, kXmlStartTagOpen);
    if (dataManager) {
        writeStrValue(k_portTag, dataManager->getCurrentCOMPortStr().text8(), writer);
        for (int32_t id = 1; id <= k_maxDevId; ++id)
            writeDevIdChValue(k_connectionTag, id, dataManager->connections.lookupObject(id), writer);
    }
    writer.writeEndTag(k_rootTag, false);
}

void TALV_Setup::takePortName(const char** attributes) {
    const char* text = XmlAttributeAccessor(attributes).lookupValue(k_textAttribute);
    if (text && dataManager->comPortValue)
        dataManager->comPortValue->fromString2(constantText(text), true);
}

void TALV_Setup::takeConnection(const char** attributes) {
    const XmlAttributeAccessor accessor(attributes);
    const int64_t id = numberOf(accessor, k_idAttribute);
    const int64_t channel = numberOf(accessor, k_channelAttribute);
    if (id >= 1 && id <= k_maxDevId)
        dataManager->connections.replace(int32_t(id), int32_t(channel));
}

}  // namespace TALV
