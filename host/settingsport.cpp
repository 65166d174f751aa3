#include "host/settingsport.h"
#include "base/source/fbuffer.h"
#include "gui/hooks.h"
#include "host/options.h"
#include "storage/fasidefile.h"
#include "storage/ffilesystem.h"
#include "storage/fmstream.h"
#include "storage/fxmlparser2.h"
#include "storage/fxmlwriter.h"
#include <algorithm>
#include <cstring>
#include <utility>

using namespace Tessarine;

namespace {
constexpr const tchar* kExtensionFolder = u"VOREN TALV Extension";
constexpr const tchar* kFileName = u"Setup.xml";
constexpr const char* kRoot = "VOREN-HA-Remote";
constexpr const char* kPortElement = "ComPortName";
constexpr int64_t kMaxSettings = 1 << 20;  // bytes; a real file has some 8 KB

/** Says whether a text is a settings file. */
class SettingsCheck : public FObject, public INewXmlHandler {
public:
    FORWARD_REFCOUNT(FObject)
    int32_t queryInterface(const char* iid, void** obj) override {
        return answerInterface<INewXmlHandler>(this, iid, obj) ? int32_t(kResultOk) : FObject::queryInterface(iid, obj);
    }
    void startTag(INewXmlParser*, const char* name, const char**) override {
        if (std::exchange(isFirst, false))
            isSettings = std::strcmp(name, kRoot) == 0;
    }
    void endTag(INewXmlParser*, const char*) override {}
    void charData(INewXmlParser*, const char*, int32_t) override {}
    void comment(INewXmlParser*, const char*) override {}

    bool isFirst = true, isSettings = false;
};

bool isSettingsText(const std::string& text) {
    const IPtr<FMemoryStream> stream = OPtr<FMemoryStream>(new FMemoryStream);
    stream->writeRaw(text.data(), int64_t(text.size()));
    stream->rewind();
    const IPtr<SettingsCheck> check = OPtr<SettingsCheck>(new SettingsCheck);
    const IPtr<FXmlParser2> parser = OPtr<FXmlParser2>(new FXmlParser2(check, nullptr));
    return parser->process(stream) && check->isSettings;
}

/** What stands between these marks is no element. */
constexpr std::pair<std::string_view, std::string_view> kSkipped[] = {
    {"<!--",      "-->"},
    {"<![CDATA[", "]]>"},
    {"<?",        "?>" },
};

/** The end of a tag, behind its ">"; quotes are respected. */
size_t endOfTag(const std::string& text, size_t first) {
    char quote = 0;
    for (size_t i = first; i < text.size(); ++i) {
        if (quote)
            quote = text[i] == quote ? 0 : quote;
        else if (text[i] == '"' || text[i] == '\'')
            quote = text[i];
        else if (text[i] == '>')
            return i + 1;
    }
    return text.size();
}

struct Range {
    size_t first, last;
};

/** The first start tag of an element from a place on in well-formed text, or nothing at npos. */
Range findStartTag(const std::string& text, std::string_view name, size_t at = 0) {
    while ((at = text.find('<', at)) != std::string::npos) {
        const std::string_view here = std::string_view(text).substr(at);
        const auto skipped =
            std::ranges::find_if(kSkipped, [here](const auto& each) { return here.starts_with(each.first); });
        if (skipped != std::end(kSkipped)) {
            at = text.find(skipped->second, at);
            continue;
        }
        const size_t end = endOfTag(text, at);
        const std::string_view rest = here.substr(1);
        if (rest.starts_with(name) && rest.find_first_of(" \t\r\n/>") == name.size())
            return {at, end};
        at = end;
    }
    return {std::string::npos, std::string::npos};
}

std::string portTag(const std::string& port, bool isEmpty) {
    Buffer escaped;
    FXmlWriter::encodeString(escaped, port.c_str(), true);  // entities that every reader of XML knows
    std::string tag("<");
    tag.append(kPortElement).append(" str=\"").append(escaped.data(), escaped.getFillSize());
    return tag.append(isEmpty ? "\"/>" : "\">");
}

/** All of them: of several the extension takes the last. false: there is none. */
bool replacePorts(std::string& text, const std::string& port) {
    bool found = false;
    for (Range old = findStartTag(text, kPortElement); old.first != std::string::npos; found = true) {
        const std::string tag = portTag(port, text[old.last - 2] == '/');
        text.replace(old.first, old.last - old.first, tag);
        old = findStartTag(text, kPortElement, old.first + tag.size());
    }
    return found;
}

std::string newSettings(const std::string& port) {
    const std::string root = kRoot;
    std::string text = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<" + root + ">\r\n";
    text.append("\t").append(portTag(port, true)).append("\r\n");
    for (int32_t id = 1; id <= kMaxDevice; ++id)
        text += "\t<DevId-Ch id=\"" + std::to_string(id) + "\" ch=\"-1\"/>\r\n";
    return text + "</" + root + ">\r\n";
}

FNPath settingsFolder() {
    FNPath folder(kFolderPath);
    String root;
    if (gControllerHooks.folder && gControllerHooks.folder(PlatformFolder::kPreferences, root)) {
        folder.fromString(root.text16(), kFolderPath);
        folder.descend(kExtensionFolder, kFolderPath);
    }
    return folder;
}

std::string readAll(FNPath& path) {
    FStream* stream = gFileSystem->openFile(&path, kOpenRead);
    if (!stream)
        return "";
    std::string text(size_t(std::clamp<int64_t>(gFileSystem->getFileSize(stream), 0, kMaxSettings)), '\0');
    const int64_t count = stream->readRaw(text.data(), int64_t(text.size()));
    text.resize(size_t(std::max<int64_t>(count, 0)));
    gFileSystem->closeFile(stream);
    return text;
}
}  // namespace

std::string settingsWithPort(const std::string& settings, const std::string& port) {
    if (!isSettingsText(settings))
        return "";
    std::string text = settings;
    if (replacePorts(text, port))
        return text;
    const Range root = findStartTag(text, kRoot);
    // 16-bit text and a subset before the root are past finding; an empty root has no room
    if (root.first == std::string::npos || text[root.last - 2] == '/')
        return "";
    return text.insert(root.last, "\r\n\t" + portTag(port, true));
}

bool putPortIntoSettings(const std::string& port, std::string& error) {
    FNPath folder = settingsFolder();
    FNPath path(kFileName, &folder, kFilePath);
    std::string text = settingsWithPort(readAll(path), port);
    if (text.empty())
        text = newSettings(port);
    if (!isSettingsText(text)) {  // or the extension couldn't read it, and would drop the assignments
        error = "--port: the name can't stand in the settings file";
        return false;
    }
    gFileSystem->createDir(&folder);
    FAsideFile file(gFileSystem, path);
    const bool written = file.getStream() &&
                         file.getStream()->writeRaw(text.data(), int64_t(text.size())) == int64_t(text.size()) &&
                         file.commit();
    if (!written)
        error = "the settings file can't be written";
    return written;
}
