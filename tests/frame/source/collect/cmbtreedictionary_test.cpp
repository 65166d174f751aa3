#include "collect/cmbtreedictionary.h"
#include "collect/cmarray.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/frame/source/collect/probe.h"

namespace Tessarine {
namespace {

using CmBTreeDictionaryTest = CollectTest;

/** Hands over new keys of these ranks with values of ten times the rank. */
void fillPairs(CmBTreeDictionary& dictionary, std::initializer_list<int32_t> ranks) {
    dictionary._ownsObjects = CmContainer::kTakesOver;
    for (const int32_t rank : ranks)
        ASSERT_TRUE(dictionary.add(new Probe(rank), new Probe(10 * rank)));
}

Ranks keysOf(const CmBTreeDictionary& dictionary) {
    Ranks keys;
    for (CmBTreeIterator cursor(dictionary); !cursor.done();)
        keys.push_back(rankOf(static_cast<CmAssociation*>(cursor.next())->key));
    return keys;
}

struct RemovalRow {
    const char* name;
    void (*remove)(CmBTreeDictionary& dictionary, CmObject* key);
};
void removeAtCursor(CmBTreeDictionary& dictionary, CmObject*) {
    const CmBTreeIterator cursor(dictionary);
    EXPECT_TRUE(dictionary.remove(cursor));
}

constexpr RemovalRow kRemovals[] = {
    {"by key", [](CmBTreeDictionary& all, CmObject* key) { EXPECT_TRUE(all.remove(key)); }},
    {"by index", [](CmBTreeDictionary& all, CmObject*) { EXPECT_TRUE(all.removeAt(0)); }},
    {"by cursor", removeAtCursor},
    {"all", [](CmBTreeDictionary& all, CmObject*) { all.removeAll(); }},
};

struct CountRow {
    CmContainer::Ownership mode;
    uint32_t whileHeld, afterRemoval;  // of key and value, which start with two
};
constexpr CountRow kCounts[] = {
    {CmContainer::kBorrows,   2, 2},
    {CmContainer::kTakesOver, 2, 1},
    {CmContainer::kShares,    3, 2},
};

TEST_F(CmBTreeDictionaryTest, CountsKeysAndValuesOnce) {
    for (const CountRow& row : kCounts) {
        for (const RemovalRow& removal : kRemovals) {
            SCOPED_TRACE(removal.name + std::string(" with ownership ") + std::to_string(row.mode));
            auto* key = new Probe(1);
            auto* value = new Probe(2);
            key->addRef();
            value->addRef();
            CmBTreeDictionary dictionary;
            dictionary._ownsObjects = row.mode;
            ASSERT_TRUE(dictionary.add(key, value));
            EXPECT_EQ(referencesOf(dictionary.lookupAssoc(key)), 1u);
            EXPECT_EQ(referencesOf(key), row.whileHeld);
            EXPECT_EQ(referencesOf(value), row.whileHeld);
            removal.remove(dictionary, key);
            EXPECT_TRUE(dictionary.isEmpty());
            EXPECT_EQ(dictionary._ownsObjects, row.mode);
            ASSERT_EQ(referencesOf(key), row.afterRemoval);
            ASSERT_EQ(referencesOf(value), row.afterRemoval);
            while (key->release() > 0) {}
            while (value->release() > 0) {}
        }
    }
}

TEST_F(CmBTreeDictionaryTest, FindsByKey) {
    CmBTreeDictionary dictionary;
    fillPairs(dictionary, {4, 2, 5, 1, 3});
    EXPECT_EQ(keysOf(dictionary), Ranks({1, 2, 3, 4, 5}));
    Probe four(4), nine(9);
    EXPECT_EQ(rankOf(dictionary.lookup(&four)), 4);
    EXPECT_NE(dictionary.lookup(&four), &four);
    EXPECT_EQ(rankOf(dictionary.lookupObject(&four)), 40);
    EXPECT_TRUE(dictionary.contains(&four));
    EXPECT_EQ(dictionary.occurrences(&four), 1);
    const CmObject* const misses[] = {&nine, nullptr};
    for (const CmObject* miss : misses) {
        EXPECT_EQ(dictionary.lookup(miss), nullptr);
        EXPECT_EQ(dictionary.lookupObject(miss), nullptr);
        EXPECT_EQ(dictionary.lookupAssoc(miss), nullptr);
        EXPECT_FALSE(dictionary.contains(miss));
        EXPECT_EQ(dictionary.occurrences(miss), 0);
        EXPECT_FALSE(dictionary.remove(const_cast<CmObject*>(miss)));
    }
}

TEST_F(CmBTreeDictionaryTest, RefusesASecondKeyAndLeavesItToTheCaller) {
    for (const CountRow& row : kCounts) {
        SCOPED_TRACE(row.mode);
        Probe key(1), twin(1), value(2), other(3);
        key.addRef();
        value.addRef();
        CmBTreeDictionary dictionary;
        dictionary._ownsObjects = row.mode;
        ASSERT_TRUE(dictionary.add(&key, &value));
        EXPECT_FALSE(dictionary.add(&twin, &other));
        EXPECT_FALSE(dictionary.add(nullptr, &other));
        EXPECT_FALSE(dictionary.add(&other));
        EXPECT_FALSE(dictionary.add(nullptr));
        EXPECT_EQ(referencesOf(&twin), 1u);
        EXPECT_EQ(referencesOf(&other), 1u);
        EXPECT_EQ(dictionary.lookupObject(&twin), &value);
    }
}

TEST_F(CmBTreeDictionaryTest, TakesAnAssociationAndSharesItWhenItShares) {
    for (const CountRow& row : kCounts) {
        SCOPED_TRACE(row.mode);
        Probe key(1);
        key.addRef();
        auto* association = new CmAssociation(&key);
        association->addRef();
        CmBTreeDictionary dictionary;
        dictionary._ownsObjects = row.mode;
        ASSERT_TRUE(dictionary.add(association));
        EXPECT_EQ(referencesOf(association), row.mode == CmContainer::kShares ? 3u : 2u);
        dictionary.removeAll();
        EXPECT_EQ(referencesOf(association), row.mode == CmContainer::kShares ? 2u : 1u);
        while (association->release() > 0) {}
    }
}

TEST_F(CmBTreeDictionaryTest, ReplacedValueGoesAndTheNewOneIsStoredAsItIs) {
    for (const CountRow& row : kCounts) {
        SCOPED_TRACE(row.mode);
        Probe key(1), first(2), second(3);
        key.addRef();
        first.addRef();
        second.addRef();
        CmBTreeDictionary dictionary;
        dictionary._ownsObjects = row.mode;
        ASSERT_TRUE(dictionary.add(&key, &first));
        EXPECT_TRUE(dictionary.replace(&key, &second));
        EXPECT_EQ(referencesOf(&first), row.afterRemoval);
        EXPECT_EQ(referencesOf(&second), 2u);
        EXPECT_EQ(dictionary.lookupObject(&key), &second);
        EXPECT_FALSE(dictionary.replace(&first, &second));
    }
}

TEST_F(CmBTreeDictionaryTest, CopiesHaveTheirOwnAssociations) {
    for (const CountRow& row : kCounts) {
        SCOPED_TRACE(row.mode);
        CmBTreeDictionary source(5);
        source._ownsObjects = row.mode;
        auto* key = new Probe(1);
        auto* value = new Probe(10);
        ASSERT_TRUE(source.add(key, value));
        {
            const bool clones = row.mode == CmContainer::kTakesOver;
            const CmBTreeDictionary byClone(source);
            CmBTreeDictionary byCopy;
            fillPairs(byCopy, {6, 7});
            EXPECT_TRUE(byCopy.copy(source));
            for (const CmBTreeDictionary* copy : {&byClone, static_cast<const CmBTreeDictionary*>(&byCopy)}) {
                EXPECT_EQ(keysOf(*copy), Ranks({1}));
                EXPECT_EQ(rankOf(copy->lookupObject(key)), 10);
                EXPECT_EQ(copy->lookup(key) == key, !clones);
                EXPECT_NE(copy->lookupAssoc(key), source.lookupAssoc(key));
            }
            EXPECT_FALSE(byCopy.addAllFrom(&source)) << "the key is there";
            EXPECT_EQ(Probe::living, clones ? 6 : 2);
        }
        EXPECT_EQ(Probe::living, 2);
        source.removeAll();
        if (row.mode != CmContainer::kTakesOver) {
            key->release();
            value->release();
        }
    }
}

TEST_F(CmBTreeDictionaryTest, AssociationsCompareByKeyAndOnlyAmongThemselves) {
    Probe one(1), twin(1), two(2);
    const CmAssociation first(&one, &two), same(&twin), later(&two), empty;
    EXPECT_TRUE(first.isEqual(&same));
    EXPECT_EQ(first.compare(&same), 0);
    EXPECT_LT(first.compare(&later), 0);
    EXPECT_GT(later.compare(&first), 0);
    EXPECT_FALSE(first.isEqual(&empty));
    EXPECT_GT(first.compare(&empty), 0);
    EXPECT_LT(empty.compare(&first), 0);
    EXPECT_FALSE(first.isEqual(&one));
    EXPECT_EQ(first.compare(&one), -1);
    EXPECT_FALSE(first.isEqual(nullptr));
    EXPECT_EQ(first.hash(97), one.hash(97));
    EXPECT_EQ(empty.hash(97), static_cast<const CmObject&>(empty).CmObject::hash(97));

    const CmAssociation copy(first);
    EXPECT_NE(copy.key, first.key);
    EXPECT_TRUE(copy.isEqual(&first));
    EXPECT_EQ(rankOf(copy.value), 2);
    copy.key->release();
    copy.value->release();
}

}  // namespace
}  // namespace Tessarine
