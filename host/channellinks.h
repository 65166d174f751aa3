#pragma once
#include "gui/values/uvaluelinker.h"
#include "host/settings.h"
#include "pluginterfaces/base/smartpointer.h"
#include <list>

/** One channel of a device. */
struct ChannelAddress {
    int32_t device, channel;

    bool operator==(const ChannelAddress&) const = default;
};

/** Pairs of channels that are kept equal: gain, trim, filter and +48V. Changes by this host go both ways, those by the line from
    the master to the slave only. A channel has one master at most, and circles are refused, so that nothing chases its own tail.

    +48V      comes on by a link only when that was allowed for it.
    Places    not values: a link waits for a device that isn't there.
    Threads   main. */
class ChannelLinks {
public:
    struct Link {
        ChannelAddress master, slave;
        bool allows48V;

        bool joins(const ChannelAddress& channel) const { return channel == master || channel == slave; }
    };

    explicit ChannelLinks(Remote& linked) : remote(linked) {}
    ChannelLinks(const ChannelLinks&) = delete;

    /** Why these can't be linked; empty: they can. */
    std::string refusal(const ChannelAddress& master, const ChannelAddress& slave) const;
    /** now: the slave takes over what the master has. */
    void add(const Link& link, bool now);
    /** That of the two, whichever way round; of one that is given twice, all that it has. false: there is none. */
    bool remove(const ChannelAddress& one, const ChannelAddress& other);
    std::vector<Link> all() const;

    /** The place, and all that are kept equal with it, masters first. */
    std::vector<Place> group(const Place& place) const;
    /** The same for all that a link keeps equal. */
    std::vector<Place> groups(const ChannelAddress& channel) const;
    /** A change by this host: it goes up to the masters, and from there to all others. */
    void follow(const Place& place);
    /** Its values are listened to from now on. */
    void deviceFound(int32_t device);

    /** What changes values at the moment. */
    enum Cause {
        kLine,       // devices say so; an answer to what this host has set isn't passed on
        kHost,       // this host
        kExactly,    // this host, which knows what belongs to each channel: nothing follows
        kBeginning,  // nobody: a master is listened to from now on
    };
    /** As long as it lives, that is the cause. */
    class Changing {
    public:
        Changing(ChannelLinks& links, Cause cause) : links(links), before(std::exchange(links.cause, cause)) {}
        ~Changing() { links.cause = before; }
        Changing(const Changing&) = delete;

    private:
        ChannelLinks& links;
        const Cause before;
    };

private:
    class End;
    struct Wire {
        const ParamRow* param;
        Tessarine::OPtr<Tessarine::UValueLinker> linker;
    };
    struct Pair {
        Link link;
        std::vector<Wire> wires;  // one for each parameter
    };

    const Pair* pairOf(const ChannelAddress& slave) const;
    void connect(const Pair& pair);
    /** false: it was left alone. */
    bool push(const Place& target, float level, bool allows48V);
    void collect(const Place& top, std::vector<Place>& found) const;

    Remote& remote;
    std::list<Pair> pairs;
    Cause cause = kLine;
};
