#include "collect/cmarray.h"
#include "collect/cmbtreedictionary.h"
#include "collect/cmdictionary.h"
#include "collect/cmhashdictionary.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbinarchive.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include "storage/fsimplearchive.h"
#include "tests/frame/source/collect/probe.h"

namespace Tessarine {
namespace {

/** A probe that can be stored. */
class StoredProbe : public Probe {
public:
    DECLARE_CLASS(StoredProbe, CmObject)
    explicit StoredProbe(int32_t rank = 0) : Probe(rank) {}
    bool internalize(FArchive& archive) override { return archive.getStream().readInt32(rank); }
    bool externalize(FArchive& archive) const override { return archive.getStream().writeInt32(rank); }
};
IMPLEMENT_CLASS(StoredProbe, CmObject)

using CmPersistenceTest = CollectTest;

OPtr<CmContainer> newContainer(const char* name) {
    OPtr<FUnknown> made(ClassFactory::instance(true)->createObjectByName(name));
    return OPtr<CmContainer>(classCast<CmContainer>(commonObject(made.detach())));
}

template <class Archive>
void write(const CmObject& object, FMemoryStream& stream) {
    Archive archive(&stream, true);
    ASSERT_TRUE(archive.save(&object));
    stream.rewind();
}

/** The elements that a container which borrows has read are the test's. */
void end(CmContainer& container) {
    container._ownsObjects = CmContainer::kTakesOver;
    container.removeAll();
}

constexpr const char* kSequences[] = {"CmArray", "CmOrderedArray", "CmLinkedList", "CmDLinkedList",
                                      "CmBTree", "CmQueue",        "CmStack"};

TEST_F(CmPersistenceTest, ContainersComeBackWithTheirOwnership) {
    for (const char* name : kSequences) {
        for (const OwnershipRow& row : kOwnerships) {
            SCOPED_TRACE(name + std::string(" with ownership ") + std::to_string(row.mode));
            const OPtr<CmContainer> source = newContainer(name);
            for (const int32_t rank : {1, 2, 2, 7})
                source->add(new StoredProbe(rank));
            source->_ownsObjects = row.mode;
            FMemoryStream stream;
            write<FNewArchive>(*source, stream);
            FAttributes attributes;
            EXPECT_TRUE(source->storeAttributes(attributes));
            const OPtr<CmContainer> restored = newContainer(name);
            for (int32_t reads = 0; reads < 2; ++reads) {  // a bag can be read many times
                end(*restored);
                EXPECT_TRUE(restored->restoreAttributes(attributes));
            }
            CmObject* loaded = FNewArchive(&stream, false).load(name);
            auto* read = classCast<CmContainer>(loaded);
            ASSERT_TRUE(read);
            for (CmContainer* copy : {read, restored.get()}) {
                EXPECT_EQ(ranksOf(*copy), ranksOf(*source));
                EXPECT_EQ(copy->_ownsObjects, row.mode);
                EXPECT_EQ(referencesOf(copy->at(0)), copy == read ? 1u : 2u);
                end(*copy);
            }
            loaded->release();
            end(*source);
        }
    }
}

template <class Dictionary>
class CmStoredDictionaryTest : public CollectTest {};
using Dictionaries = testing::Types<CmDictionary, CmBTreeDictionary, CmHashDictionary>;
TYPED_TEST_SUITE(CmStoredDictionaryTest, Dictionaries);

/** One pair in two dictionaries, as a file may say it and a bag that is read twice. */
TYPED_TEST(CmStoredDictionaryTest, SharesNoPairWithAnotherOne) {
    const OPtr<CmAssociation> pair(new CmAssociation(new StoredProbe(1), new StoredProbe(10)));
    TypeParam first, second, restored, again;
    for (TypeParam* each : {&first, &second}) {
        each->_ownsObjects = CmContainer::kShares;
        ASSERT_TRUE(each->add(pair.get()));
    }
    pair->key->release();
    pair->value->release();
    CmArray both;
    both.add(&first);
    both.add(&second);
    FMemoryStream stream;
    write<FNewArchive>(both, stream);
    const OPtr<CmObject> read(FNewArchive(&stream, false).load("CmArray"));
    ASSERT_TRUE(read);
    auto& copies = *static_cast<CmArray*>(read.get());
    copies._ownsObjects = CmContainer::kTakesOver;
    const Probe one(1);
    const bool isHashed = std::is_same_v<TypeParam, CmHashDictionary>;  // which is not read back
    EXPECT_EQ(rankOf(static_cast<TypeParam*>(copies.at(0))->lookupObject(&one)), isHashed ? -1 : 10);
    FAttributes attributes;
    EXPECT_TRUE(first.storeAttributes(attributes));
    EXPECT_TRUE(restored.restoreAttributes(attributes) && again.restoreAttributes(attributes));
    EXPECT_EQ(rankOf(restored.lookupObject(&one)), 10);
    EXPECT_NE(restored.lookupAssoc(&one), again.lookupAssoc(&one));
    EXPECT_EQ(referencesOf(pair->key), 4u);
}

/** A dictionary that is the value of its own pair, and a pair that is its own. */
TEST_F(CmPersistenceTest, PairsDoNotKeepWhatTheyStandIn) {
    CmAssociation key, pair;
    CmDictionary dictionary;
    dictionary._ownsObjects = CmContainer::kShares;
    dictionary.add(&key, &dictionary);
    pair.value = &pair;
    for (CmObject* each : {static_cast<CmObject*>(&dictionary), static_cast<CmObject*>(&pair)}) {
        FMemoryStream objects, attributes;
        write<FNewArchive>(*each, objects);
        FBinArchive writer(&attributes, true);
        ASSERT_TRUE(writer.addRoot("root", each) && writer.save());
        attributes.rewind();
        const OPtr<CmObject> read(FNewArchive(&objects, false).load(each->isA()));
        OPtr<CmObject> restored;
        {
            FBinArchive reader(&attributes, false);
            reader.load();
            restored = OPtr<CmObject>(reader.getRoot("root"));
        }
        EXPECT_TRUE(read && referencesOf(read.get()) == 1);
        EXPECT_TRUE(restored && referencesOf(restored.get()) == 1);
    }
}

TEST_F(CmPersistenceTest, HashTableIsWrittenButNotReadBack) {
    CmHashTable source(7);
    source._ownsObjects = CmContainer::kTakesOver;
    source.add(new StoredProbe(1));
    FMemoryStream stream;
    {
        FNewArchive archive(&stream, true);
        const StoredProbe before(8), behind(9);  // the class must be known before the table
        EXPECT_TRUE(archive.save(&before) && archive.save(&source) && archive.save(&behind));
    }
    stream.rewind();
    FNewArchive archive(&stream, false);
    const OPtr<CmObject> before(archive.load("StoredProbe")), read(archive.load("CmHashTable"));
    const OPtr<CmObject> behind(archive.load("StoredProbe"));
    ASSERT_TRUE(read);
    const auto& table = *static_cast<CmHashTable*>(read.get());
    EXPECT_TRUE(table.isEmpty() && table._ownsObjects == CmContainer::kTakesOver);
    EXPECT_EQ(rankOf(behind.get()), 9) << "the elements are stepped over";
}

TEST_F(CmPersistenceTest, NegativeDeltaIsWrittenAsTenAndOthersAreBelieved) {
    for (const auto& [delta, size] : {
             std::pair(-5, 20), {4, 12}
    }) {
        SCOPED_TRACE(delta);
        CmArray source(3, delta);
        FMemoryStream stream;
        write<FSimpleArchive>(source, stream);
        const OPtr<CmObject> read(FSimpleArchive(&stream, false).load("CmArray"));
        ASSERT_TRUE(read);
        fill(*static_cast<CmArray*>(read.get()), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
        EXPECT_EQ(static_cast<CmArray*>(read.get())->size(), size);
    }
}

// step, ownership, count, elements that follow, and those that are kept
constexpr std::tuple<const char*, int32_t, int16_t, int32_t, int32_t, int32_t> kHostile[] = {
    {"no such ownership",         10,        3,  1,         1, 0},
    {"ownership below 0",         10,        -1, 1,         1, 0},
    {"count below 0",             10,        1,  -1,        1, 0},
    {"count of what isn't there", 10,        1,  INT32_MAX, 2, 2},
    {"step of two billion",       INT32_MAX, 1,  3,         2, 2},
    {"no step",                   0,         1,  1,         1, 0},
    {"step back",                 -5,        2,  1,         1, 0},
};

TEST_F(CmPersistenceTest, HostileContainersEndTheReadingAndCostNothing) {
    for (const auto& [name, delta, mode, count, elements, kept] : kHostile) {
        SCOPED_TRACE(name);
        FMemoryStream stream;
        FSimpleArchive writer(&stream, true);
        stream.writeInt32(delta);
        stream.writeInt16(mode);
        stream.writeInt32(count);
        for (int32_t i = 0; i < elements; ++i) {
            const StoredProbe probe(i);
            writer.save(&probe, false);
        }
        for (int64_t length = 0; length <= stream.getSize(); ++length) {
            FMemoryStream cut(stream.getData(), static_cast<int32_t>(length));
            FSimpleArchive reader(&cut, false);
            CmArray array(0, 10);
            EXPECT_FALSE(array.internalize(reader));
            EXPECT_LE(array.total(), kept);
            EXPECT_LE(array.size(), 10);
            EXPECT_TRUE(length < stream.getSize() || array.total() == kept);
            EXPECT_TRUE(array.isEmpty() || array._ownsObjects == mode) << "the ownership is put back";
        }
    }
}

}  // namespace
}  // namespace Tessarine
