#pragma once
#include "host/channellinks.h"
#include "host/history.h"
#include "host/scenes.h"
#include <functional>
#include <set>

/** All that a user changes here: each change is a step of the history, and what is linked follows. Undo, redo, recall and link
    switch +48V on only when that is allowed.

    Threads   main. */
class Editor {
public:
    explicit Editor(Remote& edited) : remote(edited), links(edited), history(edited) {}

    /** What came of a command. */
    struct Result {
        std::string refusal;        // why nothing was changed; empty: it was done
        Changes made;               // before and after, as they were put
        std::vector<Place> left;    // +48V that was left alone
        std::set<int32_t> missing;  // devices that aren't there
    };

    Result set(const Place& place, const Setting& setting);
    /** Device 0 frees the input. */
    Result assign(int32_t device, int32_t channel);
    Result undo(bool allow48V) { return turn(history.peekUndo(), &Change::before, &History::undo, allow48V); }
    Result redo(bool allow48V) { return turn(history.peekRedo(), &Change::after, &History::redo, allow48V); }
    /** All that is sent to the devices that are there, and their assignments. Instead of a scene of this name. */
    bool saveScene(const std::string& name, std::string& error);
    /** Sends what differs. */
    Result recallScene(const std::string& name, bool allow48V);
    /** now: the slave takes over at once what the master has. */
    Result link(const ChannelLinks::Link& link, bool now);

    Scenes& getScenes() { return scenes; }
    ChannelLinks& getLinks() { return links; }
    History& getHistory() { return history; }

private:
    using Work = std::function<void()>;

    /** What a piece of work changes at the places. */
    Changes recorded(const std::vector<Place>& places, const Work& work);
    /** A step that nothing later unites with. */
    void addWhole(const char* source, const std::string& title, const Changes& changes);
    Result turn(const Changes* step, Setting Change::*side, bool (History::*go)(), bool allow48V);
    std::vector<Place> assignments(int32_t device, int32_t channel);
    std::vector<Place> changedBy(const std::vector<Scene::Entry>& entries);
    std::vector<Scene::Entry> differing(const Scene& scene, bool allow48V, Result& result);

    Remote& remote;
    ChannelLinks links;
    History history;
    Scenes scenes;
    Place lastSet = {};
};

/** "device 1 on input 8", "device 1 off"; of device 0 "input 8 free". */
std::string assignmentText(int32_t device, int32_t channel);
