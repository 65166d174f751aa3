#include "host/channellinks.h"
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
    End(ChannelLinks& links, const Place& place, bool allows48V) : links(links), place(place), allows48V(allows48V) {}

    /** Of the master. */
    void setValueFloat(float level, bool /*update*/) override {
        const auto now = Clock::now();
        while (!awaited.empty() && (awaited.size() >= kMostAwaited || isOverdue(now)))
            awaited.pop_front();
        if (links.cause != kLine) {
            awaited.push_back({level, now});
        } else if (isAnswer(level)) {
            lastAnswer = now;
            return;
        }
        links.push(place, level, allows48V);
    }

private:
    using Clock = std::chrono::steady_clock;
    struct Awaited {
        float level;
        Clock::time_point since;
    };
    static constexpr std::chrono::seconds kPatience{5};
    static constexpr size_t kMostAwaited = 4096;  // more than a line holds back

    /** The oldest one, while no answer comes. */
    bool isOverdue(Clock::time_point now) const {
        return now - std::max(awaited.front().since, lastAnswer) > kPatience;
    }

    /** An old one, behind which newer ones are on their way, undoes nothing. */
    bool isAnswer(float level) {
        const auto found = std::ranges::find(awaited, level, &Awaited::level);
        const bool isOne = found != awaited.end();
        awaited.erase(awaited.begin(), isOne ? found + 1 : found);
        return isOne;
    }

    ChannelLinks& links;
    const Place place;
    const bool allows48V;
    std::deque<Awaited> awaited;  // what this host has set the master to, in order
    Clock::time_point lastAnswer = {};
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
        const OPtr<UValue> end(new End(*this, placeOf(link.slave, &param), link.allows48V));
        pair.wires.push_back({&param, OPtr<UValueLinker>(new UValueLinker)});
        pair.wires.back().linker->addSlave(end);
    }
    const Changing changing(*this, now ? kLine : kExactly);
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
    const Changing changing(*this, kExactly);
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
