#include "host/commands.h"
#include "base/fmessage.h"
#include "base/utimer.h"
#include "host/options.h"
#include "pluginterfaces/gui/ivalue.h"
#include "tools/words/words.h"
#include <algorithm>
#include <charconv>
#include <limits>

using namespace Tessarine;

namespace {
constexpr int64_t kMaxWaitMs = 24 * 60 * 60 * 1000;
constexpr const char* kNow = "--now";
constexpr const char* kAllow48V = "--allow-48v";

/** From there on only words of these, in their order, each at most once. */
bool areFlags(const std::vector<std::string>& words, size_t from, std::initializer_list<std::string_view> flags) {
    auto flag = flags.begin();
    for (size_t i = from; i < words.size(); ++i) {
        flag = std::find(flag, flags.end(), words[i]);
        if (flag == flags.end())
            return false;
        ++flag;
    }
    return true;
}

/** A whole decimal integer; what is larger than 64 bits is the nearest. */
bool scanInteger(const std::string& word, int64_t& value) {
    const char* first = word.data() + (word.starts_with('+') ? 1 : 0);
    const char* last = word.data() + word.size();
    if (word.starts_with("+-"))
        return false;
    const auto [end, failure] = std::from_chars(first, last, value);
    if (failure == std::errc::result_out_of_range)
        value = *first == '-' ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
    return failure != std::errc::invalid_argument && end == last;
}

/** Milliseconds; more than a day is a day. */
bool scanTime(const std::string& word, int64_t& milliseconds) {
    if (!scanInteger(word, milliseconds) || milliseconds < 0)
        return false;
    milliseconds = std::min(milliseconds, kMaxWaitMs);
    return true;
}

bool scanInRange(const std::string& word, int64_t low, int64_t high, int64_t& value) {
    return scanInteger(word, value) && value >= low && value <= high;
}
}  // namespace

Json describe(const Place& place, const Setting& setting) {
    Json fields = {
        {"id", place.device}
    };
    if (place.param)
        fields["param"] = place.param->name;
    if (place.param && place.param->perChannel)
        fields["ch"] = place.channel;
    std::visit([&](const auto& held) { fields[place.param ? "value" : "channel"] = held; }, setting);
    return fields;
}

Json describe(const ChannelAddress& channel) {
    return {
        {"id", channel.device },
        {"ch", channel.channel}
    };
}

std::string lineOf(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

struct Commands::Row {
    const char* name;
    size_t fewest, most;  // words behind the name
    bool (Commands::*run)(const Words& words);
    const char* usage;
    bool inGesture = false;  // settings before and behind it can be one step
};

const Commands::Row Commands::kCommands[] = {
    {"ready", 0, 0, &Commands::ready, "ready"},
    {"wait", 2, 2, &Commands::wait, "wait ready MS"},
    {"devices", 0, 0, &Commands::devices, "devices"},
    {"get", 2, 3, &Commands::get, "get ID PARAM [CH]", true},
    {"set", 3, 4, &Commands::set, "set ID PARAM [CH] VALUE", true},
    {"assign", 2, 2, &Commands::assign, "assign ID CH"},
    {"connection", 1, 1, &Commands::connection, "connection CH"},
    {"undo", 0, 1, &Commands::undo, "undo [--allow-48v]"},
    {"redo", 0, 1, &Commands::redo, "redo [--allow-48v]"},
    {"history", 0, 0, &Commands::history, "history"},
    {"scene", 2, 3, &Commands::scene, "scene save NAME, scene delete NAME, scene recall NAME [--allow-48v]"},
    {"scenes", 0, 0, &Commands::scenes, "scenes"},
    {"link", 4, 6, &Commands::link, "link ID CH ID CH [--now] [--allow-48v]"},
    {"unlink", 2, 4, &Commands::unlink, "unlink ID CH [ID CH]"},
    {"links", 0, 0, &Commands::links, "links"},
    {"sleep", 1, 1, &Commands::sleep, "sleep MS"},
    {"factory", 0, 0, &Commands::factory, "factory"},
    {"help", 0, 0, &Commands::help, "help"},
    {"quit", 0, 0, &Commands::quit, "quit"},
};

Commands::Commands(Remote& watchedRemote, const ModuleHost& loaded, Answer answerTo, std::function<void()> quitBy)
    : remote(watchedRemote), editor(watchedRemote), module(loaded), answer(std::move(answerTo)),
      quitProgram(std::move(quitBy)) {}

Commands::~Commands() {
    if (timer)
        timer->kill();
}

void Commands::end() {
    queue.clear();
    if (waiting)
        endWaiting(false, "the host ends");
}

void Commands::take(const std::string& line) {
    if (quitting || isComment(line))
        return;
    queue.push_back(line);
    runQueue();
}

void Commands::runQueue() {
    if (running)
        return;
    running = true;
    while (!waiting && !queue.empty()) {
        const std::string line = std::move(queue.front());
        queue.pop_front();
        run(line);
    }
    running = false;
}

void Commands::run(const std::string& line) {
    ++number;
    fields = Json::object();
    const std::optional<Words> read = line.size() > kMaxLine ? std::nullopt : wordsOf(line);
    if (!read) {
        editor.getHistory().endGesture();
        refuse(line.size() > kMaxLine ? "the line is too long" : "a string is malformed");
        return reply(false, fields);
    }
    const Words& words = *read;
    const auto row = std::ranges::find_if(kCommands, [&words](const Row& each) { return words[0] == each.name; });
    if (row == std::end(kCommands) || !row->inGesture)
        editor.getHistory().endGesture();
    if (row == std::end(kCommands)) {
        refuse("unknown command " + words[0]);
        return reply(false, fields);
    }
    const size_t more = words.size() - 1;
    const bool shaped = more >= row->fewest && more <= row->most;
    const bool ok = shaped ? (this->*row->run)(words) : refuse(std::string("usage: ") + row->usage);
    if (!waiting)
        reply(ok, fields);
}

void Commands::reply(bool ok, const Json& more) {
    Json object = {
        {"reply", number},
        {"ok",    ok    }
    };
    if (!ok)
        object["error"] = error;
    object.update(more);
    answer(object);
}

bool Commands::refuse(const std::string& why) {
    error = why;
    return false;
}

bool Commands::ready(const Words& /*words*/) {
    fields["ready"] = remote.isReady();
    return true;
}

// --- waiting

bool Commands::wait(const Words& words) {
    int64_t milliseconds = 0;
    if (words[1] != "ready" || !scanTime(words[2], milliseconds))
        return refuse("usage: wait ready MS");
    if (remote.isReady() || milliseconds == 0) {
        fields["ready"] = remote.isReady();
        return remote.isReady() || refuse("time-out");
    }
    startWaiting(milliseconds, true);
    return true;
}

bool Commands::sleep(const Words& words) {
    int64_t milliseconds = 0;
    if (!scanTime(words[1], milliseconds))
        return refuse("usage: sleep MS");
    if (milliseconds > 0)
        startWaiting(milliseconds, false);
    return true;
}

void Commands::startWaiting(int64_t milliseconds, bool forReady) {
    waiting = true;
    waitsForReady = forReady;
    timer = new UTimer(this, 0, uint32_t(milliseconds));
}

int32_t Commands::notify(FMessage* message) {
    if (!message || !message->isType("Timer"))
        return CmObject::notify(message);
    endWaiting(!waitsForReady || remote.isReady(), "time-out");
    return 1;
}

void Commands::look() {
    if (waiting && waitsForReady && remote.isReady())
        endWaiting(true, "");
}

void Commands::endWaiting(bool ok, const char* why) {
    timer->kill();
    timer = nullptr;
    if (waitsForReady)
        fields["ready"] = remote.isReady();
    error = why;
    waiting = false;
    reply(ok, fields);
    runQueue();
}

// --- devices and their values

bool Commands::devices(const Words& /*words*/) {
    Json list = Json::array();
    for (const int32_t device : remote.getDevices()) {
        IValue* name = remote.getValue({device, findParam("devName"), -1});
        IValue* mode = remote.getValue({device, findParam("devMode"), -1});
        if (name && mode)
            list.push_back({
                {"id",      device                   },
                {"name",    textOf(name)             },
                {"mode",    mode->getValueInt()      },
                {"channel", remote.getChannel(device)}
            });
    }
    fields["ready"] = remote.isReady();
    fields["count"] = list.size();
    fields["devices"] = std::move(list);
    return true;
}

/** ID PARAM [CH], and `more` words behind. */
bool Commands::scanAddress(const Words& words, size_t more, ParamAddress& address) {
    int64_t device = 0, channel = -1;
    if (!scanInRange(words[1], 1, kMaxDevice, device))
        return refuse("ID is 1 to 255");
    const ParamRow* param = findParam(words[2]);
    if (!param)
        return refuse("unknown parameter " + words[2]);
    if (words.size() != 3 + more + (param->perChannel ? 1 : 0))
        return refuse(std::string(param->name) + (param->perChannel ? " has a channel, CH" : " has no channel"));
    if (param->perChannel && !scanInRange(words[3], 0, TALV::kNumChannels - 1, channel))
        return refuse("CH is 0 to 7");
    address = {int32_t(device), param, int32_t(channel)};
    return remote.getValue(address) || refuse("no device " + words[1]);
}

bool Commands::tellSetting(const ParamAddress& address) {
    const std::optional<Setting> setting = settingAt(remote, address);
    if (!setting)
        return refuse("device " + std::to_string(address.device) + " has gone");
    fields = describe(address, *setting);
    return true;
}

bool Commands::get(const Words& words) {
    ParamAddress address = {};
    if (!scanAddress(words, 0, address))
        return false;
    return tellSetting(address);
}

bool Commands::set(const Words& words) {
    ParamAddress address = {};
    int64_t number64 = 0;
    if (!scanAddress(words, 1, address))
        return false;
    const std::string& text = words.back();
    if (!address.param->isText && !scanInteger(text, number64))
        return refuse("no integer: " + text);
    const auto bounded = int32_t(std::clamp<int64_t>(number64, INT32_MIN, INT32_MAX));
    const Editor::Result result = editor.set(address, address.param->isText ? Setting(text) : Setting(bounded));
    if (!result.refusal.empty())
        return refuse(result.refusal);
    return tellSetting(address);
}

bool Commands::assign(const Words& words) {
    int64_t device = 0, channel = 0;
    if (!scanInRange(words[1], 0, kMaxDevice, device))
        return refuse("ID is 0 to 255");
    if (!scanInRange(words[2], -1, kMaxInputs - 1, channel))
        return refuse("CH is -1 to 2039");
    const Editor::Result result = editor.assign(int32_t(device), int32_t(channel));
    if (!result.refusal.empty())
        return refuse(result.refusal);
    fields["id"] = device;
    fields["ch"] = channel;
    return true;
}

bool Commands::connection(const Words& words) {
    int64_t channel = 0;
    if (!scanInRange(words[1], 0, kMaxInputs - 1, channel))
        return refuse("CH is 0 to 2039");
    fields["ch"] = channel;
    fields["id"] = remote.getDeviceOn(int32_t(channel));
    return true;
}

// --- steps, scenes and links

/** What was changed, with what stands on this side of each change. */
bool Commands::tell(const Editor::Result& result, Setting Change::*side) {
    if (!result.refusal.empty())
        return refuse(result.refusal);
    fields["steps"] = Json::array();
    for (const Change& change : result.made)
        fields["steps"].push_back(describe(change.place, change.*side));
    if (!result.missing.empty())
        fields["missing"] = result.missing;
    return true;
}

bool Commands::undo(const Words& words) {
    if (!areFlags(words, 1, {kAllow48V}))
        return refuse("usage: undo [--allow-48v]");
    return tell(editor.undo(words.size() > 1), &Change::before);
}

bool Commands::redo(const Words& words) {
    if (!areFlags(words, 1, {kAllow48V}))
        return refuse("usage: redo [--allow-48v]");
    return tell(editor.redo(words.size() > 1), &Change::after);
}

bool Commands::history(const Words& /*words*/) {
    Json list = Json::array();
    for (const History::Entry& entry : editor.getHistory().entries())
        list.push_back({
            {"title",  entry.title },
            {"time",   entry.time  },
            {"source", entry.source}
        });
    fields["entries"] = std::move(list);
    fields["position"] = editor.getHistory().position();
    return true;
}

bool Commands::scene(const Words& words) {
    const std::string& name = words[2];
    std::string why;
    if (words[1] == "recall" && areFlags(words, 3, {kAllow48V}))
        return recall(words);
    const bool saves = words[1] == "save";
    if ((!saves && words[1] != "delete") || words.size() > 3)
        return refuse("usage: scene save NAME, scene delete NAME, scene recall NAME [--allow-48v]");
    if (!(saves ? editor.saveScene(name, why) : editor.getScenes().remove(name, why)))
        return refuse(why);
    fields["name"] = name;
    return true;
}

bool Commands::recall(const Words& words) {
    const Editor::Result result = editor.recallScene(words[2], words.size() > 3);
    if (!result.refusal.empty())
        return refuse(result.refusal);
    fields["name"] = words[2];
    fields["sent"] = std::ranges::count_if(result.made, [](const Change& each) { return each.place.param; });
    fields["left"] = Json::array();
    for (const Place& place : result.left)
        fields["left"].push_back(describe(ChannelAddress{place.device, place.channel}));
    fields["missing"] = result.missing;
    return true;
}

bool Commands::scenes(const Words& /*words*/) {
    fields["scenes"] = editor.getScenes().names();
    return true;
}

/** ID CH */
bool Commands::scanChannel(const Words& words, size_t at, ChannelAddress& address) {
    int64_t device = 0, channel = 0;
    if (!scanInRange(words[at], 1, kMaxDevice, device))
        return refuse("ID is 1 to 255");
    if (!scanInRange(words[at + 1], 0, TALV::kNumChannels - 1, channel))
        return refuse("CH is 0 to 7");
    address = {int32_t(device), int32_t(channel)};
    return true;
}

bool Commands::link(const Words& words) {
    ChannelLinks::Link made = {};
    if (!areFlags(words, 5, {kNow, kAllow48V}))
        return refuse("usage: link ID CH ID CH [--now] [--allow-48v]");
    if (!scanChannel(words, 1, made.master) || !scanChannel(words, 3, made.slave))
        return false;
    for (const ChannelAddress& each : {made.master, made.slave})
        if (!remote.getDevices().contains(each.device))
            return refuse("no device " + std::to_string(each.device));
    made.allows48V = words.back() == kAllow48V;
    const Editor::Result result = editor.link(made, words.size() > 5 && words[5] == kNow);
    return tell(result, &Change::after) && links(words);
}

bool Commands::unlink(const Words& words) {
    ChannelAddress one = {}, other = {};
    if (words.size() == 4)
        return refuse("usage: unlink ID CH [ID CH]");
    if (!scanChannel(words, 1, one) || !scanChannel(words, words.size() - 2, other))
        return false;
    if (!editor.getLinks().remove(one, other))
        return refuse(one == other ? "this channel isn't linked" : "these aren't linked");
    return links(words);
}

bool Commands::links(const Words& /*words*/) {
    fields["links"] = Json::array();
    for (const ChannelLinks::Link& link : editor.getLinks().all())
        fields["links"].push_back({
            {"master",   describe(link.master)},
            {"slave",    describe(link.slave) },
            {"allow48v", link.allows48V       }
        });
    return true;
}

// --- the program itself

bool Commands::factory(const Words& /*words*/) {
    IPluginFactory3* source = module.getFactory();
    PFactoryInfo info;
    source->getFactoryInfo(&info);
    Json classes = Json::array();
    for (int32_t i = 0; i < source->countClasses(); ++i) {
        PClassInfo2 row;
        if (source->getClassInfo2(i, &row) != kResultOk)
            continue;
        char cid[33];
        FUID(static_cast<const char*>(row.cid)).toString(cid);
        classes.push_back({
            {"cid",      cid         },
            {"name",     row.name    },
            {"category", row.category},
            {"version",  row.version }
        });
    }
    fields["vendor"] = info.vendor;
    fields["flags"] = info.flags;
    fields["classes"] = std::move(classes);
    return true;
}

bool Commands::help(const Words& /*words*/) {
    Json list = Json::array();
    for (const Row& row : kCommands)
        list.push_back(row.usage);
    fields["commands"] = std::move(list);
    return true;
}

bool Commands::quit(const Words& /*words*/) {
    quitting = true;
    queue.clear();
    quitProgram();
    return true;
}
