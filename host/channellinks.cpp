#include "host/channellinks.h"
#include "base/fmessage.h"
#include "base/utimer.h"
#include "pluginterfaces/gui/ivalue.h"
#include <algorithm>
#include <chrono>
#include <deque>

using namespace Tessarine;

namespace {
bool isLinked(const ParamRow& param) {
    return param.perChannel && param.isSent;
}

ChannelAddress channelOf(const Place& place) {
    return {place.device, place.channel};
}

Place placeOf(const ChannelAddress& channel, const ParamRow* param) {
    return {channel.device, param, channel.channel};
}
}  // namespace

/** The slave of a linker: the place where a value of the slave stands, whichever that is at the moment. */
class ChannelLinks::End : public UValue {
public:
    End(ChannelLinks& links, const Link& link, const ParamRow* param)
        : links(links), master(placeOf(link.master, param)), slave(placeOf(link.slave, param)),
          allows48V(link.allows48V),
          silence(new UTimer(this, 0, uint32_t(std::chrono::milliseconds(kPatience).count()))) {
        silence->stop();
    }
    ~End() override { silence->kill(); }

    /** Of the master. */
    void setValueFloat(float level, bool /*update*/) override {
        silence->stop();
        dropOverdue();
        if (links.cause == kBeginning)
            return awaited.clear();
        if (links.cause != kLine)
            awaited.push_back({level, Clock::now()});
        else if (isAnswer(level))
            return awaitNewer(level);
        links.push(slave, level, allows48V);
    }
    /** What was taken for an answer, with newer ones on their way, was none. */
    int32_t notify(FMessage* message) override {
        if (!message || !message->isType("Timer"))
            return UValue::notify(message);
        silence->stop();
        awaited.clear();
        if (const IPtr<IValue> value = links.remote.getValue(master))
            links.push(slave, value->getValueFloat(), allows48V);
        return 1;
    }

private:
    using Clock = std::chrono::steady_clock;
    struct Awaited {
        float level;
        Clock::time_point since;
    };
    static constexpr std::chrono::seconds kPatience{5};
    static constexpr size_t kMostAwaited = 4096;  // more than a line holds back

    /** The oldest ones, while no answer comes. */
    void dropOverdue() {
        const auto limit = Clock::now() - kPatience;
        while (!awaited.empty() && (awaited.size() >= kMostAwaited || std::max(awaited[0].since, answered) < limit))
            awaited.pop_front();
    }
    /** An old one, behind which newer ones are on their way, undoes nothing. */
    bool isAnswer(float level) {
        const auto found = std::ranges::find(awaited, level, &Awaited::level);
        const bool isOne = found != awaited.end();
        awaited.erase(awaited.begin(), isOne ? found + 1 : found);
        return isOne;
    }
    void awaitNewer(float level) {
        answered = Clock::now();
        if (!awaited.empty() && awaited.back().level != level)
            silence->restart(0);
    }

    ChannelLinks& links;
    const Place master, slave;
    const bool allows48V;
    std::deque<Awaited> awaited;  // what this host has set the master to, in order
    Clock::time_point answered = {};
    UTimer* const silence;  // owned; runs while newer answers must come
};

// --- making and ending

std::string ChannelLinks::refusal(const ChannelAddress& master, const ChannelAddress& slave) const {
    if (pairOf(slave))
        return "the second channel follows another one already";
    for (const ChannelAddress* each = &master; each;) {
        if (*each == slave)
            return "a channel can't follow itself";
        const Pair* pair = pairOf(*each);
        each = pair ? &pair->link.master : nullptr;
    }
    return "";
}

const ChannelLinks::Pair* ChannelLinks::pairOf(const ChannelAddress& slave) const {
    const auto found = std::ranges::find_if(pairs, [&](const Pair& each) { return each.link.slave == slave; });
    return found == pairs.end() ? nullptr : &*found;
}

void ChannelLinks::add(const Link& link, bool now) {
    Pair& pair = pairs.emplace_back(Pair{link, {}});
    for (const ParamRow& param : kParams) {
        if (!isLinked(param))
            continue;
        const OPtr<UValue> end(new End(*this, link, &param));
        pair.wires.push_back({&param, OPtr<UValueLinker>(new UValueLinker)});
        pair.wires.back().linker->addSlave(end);
    }
    const Changing changing(*this, now ? kLine : kBeginning);
    connect(pair);
}

bool ChannelLinks::remove(const ChannelAddress& one, const ChannelAddress& other) {
    return std::erase_if(pairs, [&](const Pair& each) { return each.link.joins(one) && each.link.joins(other); }) > 0;
}

std::vector<ChannelLinks::Link> ChannelLinks::all() const {
    std::vector<Link> found;
    for (const Pair& pair : pairs)
        found.push_back(pair.link);
    return found;
}

void ChannelLinks::connect(const Pair& pair) {
    for (const Wire& wire : pair.wires) {
        IValue* value = remote.getValue(placeOf(pair.link.master, wire.param));
        wire.linker->addMaster(classCast<UValue>(commonObject(value)));
    }
}

void ChannelLinks::deviceFound(int32_t device) {
    const Changing changing(*this, kBeginning);
    for (const Pair& pair : pairs)
        if (pair.link.master.device == device)
            connect(pair);
}

// --- following

bool ChannelLinks::push(const Place& target, float level, bool allows48V) {
    const IPtr<IValue> value = remote.getValue(target);
    if (cause == kExactly || !value || (!allows48V && switches48VOn(remote, target, int32_t(level))))
        return false;
    const Changing changing(*this, kHost);
    value->setValueFloat(level, true);
    return true;
}

void ChannelLinks::follow(const Place& place) {
    const Pair* pair = place.param && isLinked(*place.param) ? pairOf(channelOf(place)) : nullptr;
    IValue* value = pair ? remote.getValue(place) : nullptr;
    if (!value)
        return;
    const Place master = placeOf(pair->link.master, place.param);
    if (push(master, value->getValueFloat(), pair->link.allows48V))
        follow(master);
}

std::vector<Place> ChannelLinks::group(const Place& place) const {
    if (!place.param || !isLinked(*place.param))
        return {place};
    Place top = place;
    while (const Pair* pair = pairOf(channelOf(top)))
        top = placeOf(pair->link.master, place.param);
    std::vector<Place> found;
    collect(top, found);
    return found;
}

void ChannelLinks::collect(const Place& top, std::vector<Place>& found) const {
    found.push_back(top);
    for (const Pair& pair : pairs)
        if (pair.link.master == channelOf(top))
            collect(placeOf(pair.link.slave, top.param), found);
}

std::vector<Place> ChannelLinks::groups(const ChannelAddress& channel) const {
    std::vector<Place> found;
    for (const ParamRow& param : kParams)
        if (isLinked(param))
            std::ranges::copy(group(placeOf(channel, &param)), std::back_inserter(found));
    return found;
}
