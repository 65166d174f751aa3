// The settings of a program: numbers and texts by group and key, 100 keys a group, in a file each. Saved whole after one
// of them has changed, and loaded whole, time per key; what was loaded is asked for one key of each group. A peer that reads its file only when it is asked is so
// counted with its reading.
#include "base/fdefaults.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fpath.h"
#include "storage/hooks.h"
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#ifdef BENCH_QT
#include <QSettings>
#endif

using namespace Tessarine;

namespace {
constexpr int64_t kKeysPerGroup = 100;
constexpr char16_t kText[] = u"A text of a common length";

/** A folder that goes at the end. */
struct Folder {
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "benchXXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }

    std::filesystem::path path;
};
const Folder folder;

std::string groupName(int64_t group) {
    return "Group " + std::to_string(group);
}

std::string keyName(int64_t key) {
    return "Key " + std::to_string(key);
}

bool userFolder(int32_t number, FNPath& path) {
    String text;
    if (number != kUserFolder || !text.fromUTF8(folder.path.c_str()))
        return false;
    path.fromString(text.text16(), kFolderPath);
    return true;
}

class OurPool {
public:
    OurPool() { gStorageHooks.standardFolder = userFolder; }
    void fill(int64_t count) {
        for (int64_t i = 0; i < count; ++i)
            put(*pool->getDefaults(groupName(i / kKeysPerGroup).c_str(), 0, true), i);
    }
    bool save() {
        pool->getDefaults("Group 0", 0, true)->setLong("changing", ++changes);
        return pool->saveArchive("Settings");
    }
    bool load() {
        pool = new FDefaultPool;
        return pool->loadArchive("Settings");
    }
    bool has(int64_t group, int64_t key) {
        int32_t number = 0;
        return pool->getLong(groupName(group).c_str(), keyName(key).c_str(), number) == kResultOk && number == key;
    }

private:
    static void put(FDefaults& group, int64_t i) {
        const std::string key = keyName(i % kKeysPerGroup);
        if (i % 2 == 0)
            group.setLong(key.c_str(), int32_t(i % kKeysPerGroup));
        else
            group.setString16(key.c_str(), kText);
    }

    OPtr<FDefaultPool> pool{new FDefaultPool};
    int32_t changes = 0;
};

#ifdef BENCH_QT
/** Its native format: a text file of groups. What it has read of a file it remembers by the name, so that each loading gets
    a new one. */
class QtSettings {
public:
    void fill(int64_t count) {
        load();
        for (int64_t i = 0; i < count; ++i)
            settings->setValue(pathOf(i / kKeysPerGroup, i % kKeysPerGroup),
                               i % 2 == 0 ? QVariant(int(i % kKeysPerGroup)) : QVariant(QString::fromUtf16(kText)));
    }
    bool save() {
        settings->setValue("Group 0/changing", ++changes);
        settings->sync();
        return settings->status() == QSettings::NoError;
    }
    bool load() {
        settings.reset();
        const std::string before = nameOf(loads++), now = nameOf(loads);
        std::rename(before.c_str(), now.c_str());
        settings = std::make_unique<QSettings>(QString::fromStdString(now), QSettings::NativeFormat);
        return settings->status() == QSettings::NoError;
    }
    bool has(int64_t group, int64_t key) { return settings->value(pathOf(group, key)).toInt() == key; }

private:
    static QString pathOf(int64_t group, int64_t key) {
        return QString::fromStdString(groupName(group) + '/' + keyName(key));
    }

    static std::string nameOf(int number) {
        return (folder.path / ("settings" + std::to_string(number) + ".conf")).string();
    }

    std::unique_ptr<QSettings> settings;
    int changes = 0, loads = 0;
};
#endif

template <class Settings>
void save(benchmark::State& state) {
    Settings settings;
    settings.fill(state.range(0));
    for (auto _ : state) {
        if (!settings.save())
            state.SkipWithError("it can't be saved");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Settings>
void load(benchmark::State& state) {
    Settings settings;
    settings.fill(state.range(0));
    settings.save();
    for (auto _ : state) {
        bool whole = settings.load();
        for (int64_t group = 0; group < state.range(0) / kKeysPerGroup; ++group)
            whole = settings.has(group, group % kKeysPerGroup & ~1) && whole;
        if (!whole)
            state.SkipWithError("it can't be loaded");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
}  // namespace

#define BENCH_SETTINGS(Peer, Settings)                                              \
    BENCHMARK_TEMPLATE(save, Settings)->Name("SaveDefaults<" Peer ">")->Arg(10000); \
    BENCHMARK_TEMPLATE(load, Settings)->Name("LoadDefaults<" Peer ">")->Arg(10000)

BENCH_SETTINGS("Ours", OurPool);
#ifdef BENCH_QT
BENCH_SETTINGS("QtSettings", QtSettings);
#endif
