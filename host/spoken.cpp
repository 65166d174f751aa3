#include "host/spoken.h"
#include <algorithm>

namespace {
std::string plain(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string fieldsText(const Json& object) {
    std::string text;
    for (const auto& [name, value] : object.items())
        text += (text.empty() ? "" : " ") + name + " " + plain(value);
    return text;
}

std::string itemText(const Json& item) {
    return item.is_object() ? fieldsText(item) : plain(item);
}

std::string channelText(const Json& item) {
    const std::string device = plain(item.at("id"));
    return item.contains("ch") ? device + "/" + plain(item["ch"]) : device;
}

std::string stepText(const Json& item) {
    if (!item.contains("param"))
        return assignmentText(item.at("id"), item.at("channel"));
    return plain(item["param"]) + " " + channelText(item) + " = " + plain(item.at("value"));
}

std::string entryText(const Json& item) {
    const std::string time = plain(item.at("time"));
    return plain(item.at("title")) + " at " + time.substr(time.find('T') + 1);
}

std::string pairText(const Json& item) {
    return channelText(item.at("master")) + " to " + channelText(item.at("slave")) +
           (item.at("allow48v") == true ? " with +48V" : "");
}

struct Wording {
    const char* list;
    std::string (*text)(const Json& item);
    bool isNumbered = false;
};
constexpr Wording kWordings[] = {
    {"steps", stepText},
    {"entries", entryText, true},
    {"left", channelText},
    {"links", pairText},
};

std::string listText(const std::string& name, const Json& list) {
    const auto own = std::ranges::find_if(kWordings, [&name](const Wording& each) { return name == each.list; });
    const bool isKnown = own != std::end(kWordings);
    std::string text;
    for (size_t i = 0; i < list.size(); ++i) {
        text += i > 0 ? ", " : "";
        text += isKnown && own->isNumbered ? std::to_string(i + 1) + ": " : "";
        text += (isKnown ? own->text : itemText)(list[i]);
    }
    return text.empty() ? "none" : text;
}
}  // namespace

std::string spoken(const Json& reply) {
    std::string line = reply["ok"] == true ? "ok" : "refused: " + reply.value("error", "");
    for (const auto& [name, value] : reply.items())
        if (name != "reply" && name != "ok" && name != "error")
            line += "  " + name + " " + (value.is_array() ? listText(name, value) : plain(value));
    return line;
}
