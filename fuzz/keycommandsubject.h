#pragma once
#include "demand.h"
#include "graphed/gcommandmanager.h"
#include "graphed/gkeycommandsfile.h"
#include "storage/fmstream.h"
#include "storage/fpersistent.h"
#include "storage/fxmlarchive.h"
#include <vector>

namespace KeyCommandFuzz {
using namespace Tessarine;

/** A manager with some commands and keys, of whatever one may have read. */
struct Subject {
    Subject() {
        manager.enableMacroCommands(true);
        manager.addCommand("Edit", "Cut", nullptr, UKeyCode(u'x', 0, UKeyCode::kCommand));
        manager.addCommand("Edit", "Paste", nullptr, UKeyCode(0, UKeyCode::kInsert, UKeyCode::kShift));
        manager.addCommand("File", "Open", nullptr, UKeyCode());
    }
    std::vector<UKeyCode> keys() const {
        std::vector<UKeyCode> all;
        for (const char* name : {"Cut", "Paste"})
            for (const UKeyCode& key : manager.findKeyCommands(ConstString("Edit"), ConstString(name)))
                if (ConstString(u"\"\r\n").findNext(0, key.character) <
                    0)  // these can't stand between quotes on a line
                    all.push_back(key);
        return all;
    }

    GCommandManager manager;
};

inline void fill(FMemoryStream& stream, const uint8_t* data, size_t size) {
    stream.writeRaw(data, int64_t(size));
    stream.rewind();
}

/** As a program keeps them from one start to the next. */
inline std::vector<UKeyCode> keptKeys(const GCommandManager& manager) {
    Subject next;
    FMemoryStream kept;
    FAttributes bag;
    demand(manager.storeAttributes(bag) && FXmlArchive(&kept, true).saveAttributes("KeyCommands", bag));
    kept.rewind();
    demand(FXmlArchive::restoreObject(&kept, "KeyCommands", &next.manager));
    return next.keys();
}

/** read gives true when it has; else nothing has changed. What was read is written, and comes back, also as XML. */
template <class Read, class Write>
void check(const uint8_t* data, size_t size, Read read, Write write) {
    Subject first, second;
    FMemoryStream source, again;
    fill(source, data, size);
    const std::vector<UKeyCode> before = first.keys();
    if (!read(source, first.manager)) {
        demand(first.keys() == before);
        return;
    }
    demand(write(again, first.manager));
    again.rewind();
    demand(read(again, second.manager));
    demand(first.keys() == second.keys());
    demand(first.keys() == keptKeys(first.manager));
}
}  // namespace KeyCommandFuzz
