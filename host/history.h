#pragma once
#include "graphed/gactionprocessor.h"
#include "host/settings.h"

/** What was set, as steps that can be taken back and made again. They know places, never values, since these go with a port.

    Unites    what follows one another quickly is one step, unless endGesture came between.
    Threads   main. */
class History {
public:
    struct Entry {
        std::string title, time;  // local time, 2026-11-21T09:05:00
        std::string source;       // which command
    };

    explicit History(Remote& remote);

    /** What comes next is a step of its own. */
    void endGesture() { ++gesture; }
    /** Changes that were made already. Without any nothing is added. */
    void add(const char* source, const std::string& title, Changes changes);
    /** Those of the next step, in the order in which they were made; null: there is none. Borrowed for the moment. */
    const Changes* peekUndo() const { return changesOf(processor->peekUndo()); }
    const Changes* peekRedo() const { return changesOf(processor->peekRedo()); }
    /** What is no more there is passed over. false: there is no step. */
    bool undo() { return processor->undo(); }
    bool redo() { return processor->redo(); }

    /** From the first step on, those that can be made again too. */
    std::vector<Entry> entries() const;
    /** How many of them are done. */
    size_t position() const;

    static constexpr int32_t kMaxSteps = 1000;

private:
    static const Changes* changesOf(Tessarine::GAction* action);

    Remote& remote;
    Tessarine::OPtr<Tessarine::GActionProcessor> processor;
    int64_t gesture = 0;
};
