#include "collect/cmdictionary.h"
#include "collect/cmbtreedictionary.h"
#include "collect/cmhashdictionary.h"
#include "pluginterfaces/base/smartpointer.h"
#include "tests/frame/source/collect/probe.h"

namespace Tessarine {
namespace {

template <class Dictionary>
class CmDictionaryTest : public CollectTest {};
using Dictionaries = testing::Types<CmDictionary, CmHashDictionary, CmBTreeDictionary>;
TYPED_TEST_SUITE(CmDictionaryTest, Dictionaries);

/** Hands over new keys of these ranks with values of ten times the rank. */
template <class Dictionary>
void fillPairs(Dictionary& dictionary, std::initializer_list<int32_t> ranks) {
    dictionary._ownsObjects = CmContainer::kTakesOver;
    for (const int32_t rank : ranks)
        ASSERT_TRUE(dictionary.add(new Probe(rank), new Probe(10 * rank)));
}

Ranks keysOf(const CmContainer& dictionary) {
    Ranks keys;
    const std::unique_ptr<CmIterator> cursor(dictionary.newIterator());
    while (!cursor->done())
        keys.push_back(rankOf(static_cast<CmAssociation*>(cursor->next())->key));
    return keys;
}

TYPED_TEST(CmDictionaryTest, CountsKeysAndValuesOnce) {
    for (const OwnershipRow& row : kOwnerships) {
        for (const RemovalRow& removal : kRemovals) {
            SCOPED_TRACE(removal.name + std::string(" with ownership ") + std::to_string(row.mode));
            Probe *key = new Probe(1), *value = new Probe(2);
            key->addRef();
            value->addRef();
            TypeParam dictionary;
            dictionary._ownsObjects = row.mode;
            ASSERT_TRUE(dictionary.add(key, value));
            EXPECT_EQ(referencesOf(dictionary.lookupAssoc(key)), 1u);
            EXPECT_TRUE(referencesOf(key) == row.whileHeld && referencesOf(value) == row.whileHeld);
            removal.removeOne(dictionary, key);
            EXPECT_TRUE(dictionary.isEmpty() && dictionary._ownsObjects == row.mode);
            ASSERT_TRUE(referencesOf(key) == row.afterRemoval && referencesOf(value) == row.afterRemoval);
            while (key->release() > 0) {}
            while (value->release() > 0) {}
        }
    }
}

TYPED_TEST(CmDictionaryTest, FindsByKey) {
    TypeParam dictionary;
    fillPairs(dictionary, {4, 2, 5, 1, 3});
    EXPECT_EQ(keysOf(dictionary), dictionary.isA("CmDictionary") ? Ranks({4, 2, 5, 1, 3}) : Ranks({1, 2, 3, 4, 5}));
    Probe four(4), nine(9);
    EXPECT_TRUE(rankOf(dictionary.lookup(&four)) == 4 && dictionary.lookup(&four) != &four);
    EXPECT_EQ(rankOf(dictionary.lookupObject(&four)), 40);
    EXPECT_EQ(dictionary.occurrences(&four), 1);
    if constexpr (std::is_same_v<TypeParam, CmDictionary>) {
        const Probe fifty(50);
        EXPECT_TRUE(rankOf(dictionary.lookupKey(&fifty)) == 5 && !dictionary.lookupKey(&four));
    }
    for (CmObject* miss : {static_cast<CmObject*>(&nine), static_cast<CmObject*>(nullptr)}) {
        EXPECT_TRUE(!dictionary.lookup(miss) && !dictionary.lookupObject(miss) && !dictionary.lookupAssoc(miss));
        EXPECT_FALSE(dictionary.contains(miss) || dictionary.occurrences(miss) || dictionary.remove(miss));
    }
}

TYPED_TEST(CmDictionaryTest, RefusesASecondKeyAndReplacesValuesByHand) {
    for (const OwnershipRow& row : kOwnerships) {
        SCOPED_TRACE(row.mode);
        Probe key(1), twin(1), first(2), second(3);
        key.addRef();
        first.addRef();
        TypeParam dictionary;
        dictionary._ownsObjects = row.mode;
        ASSERT_TRUE(dictionary.add(&key, &first));
        EXPECT_FALSE(dictionary.add(&twin, &second) || dictionary.add(nullptr, &second) || dictionary.add(&second));
        EXPECT_TRUE(referencesOf(&twin) == 1 && referencesOf(&second) == 1) << "left to the caller";
        second.addRef();
        EXPECT_TRUE(dictionary.replace(&key, &second) && !dictionary.replace(&first, &second));
        EXPECT_EQ(referencesOf(&first), row.afterRemoval);
        EXPECT_EQ(referencesOf(&second), 2u) << "stored as it is";
        EXPECT_EQ(dictionary.lookupObject(&twin), &second);
    }
}

TYPED_TEST(CmDictionaryTest, CopiesHaveTheirOwnAssociations) {
    for (const OwnershipRow& row : kOwnerships) {
        SCOPED_TRACE(row.mode);
        const bool clones = row.mode == CmContainer::kTakesOver;
        TypeParam source;
        source._ownsObjects = row.mode;
        const OPtr<CmObject> key(new Probe(1)), value(new Probe(10));
        for (CmObject* each : {key.get(), value.get()})
            each->addRef();  // the dictionary's, where it takes over
        ASSERT_TRUE(source.add(key.get(), value.get()));
        const TypeParam byClone(source);
        TypeParam byCopy;
        fillPairs(byCopy, {6, 7});
        EXPECT_TRUE(byCopy.copy(source));
        EXPECT_FALSE(byCopy.addAllFrom(&source)) << "the key is there";
        for (const TypeParam* copy : {&byClone, static_cast<const TypeParam*>(&byCopy)}) {
            EXPECT_TRUE(keysOf(*copy) == Ranks({1}) && rankOf(copy->lookupObject(key)) == 10);
            EXPECT_EQ(copy->lookup(key) == key, !clones);
            EXPECT_NE(copy->lookupAssoc(key), source.lookupAssoc(key));
        }
        EXPECT_EQ(Ranked::living, clones ? 6 : 2);
        if (!clones) {
            key->release();
            value->release();
        }
    }
}

using CmAssociationTest = CollectTest;

TEST_F(CmAssociationTest, CompareByKeyAndOnlyAmongThemselves) {
    Probe one(1), twin(1), two(2);
    const CmAssociation first(&one, &two), same(&twin), later(&two), empty;
    EXPECT_TRUE(first.isEqual(&same) && first.hash(97) == one.hash(97));
    EXPECT_TRUE(first.compare(&same) == 0 && first.compare(&later) < 0 && later.compare(&first) > 0);
    EXPECT_TRUE(!first.isEqual(&empty) && first.compare(&empty) > 0 && empty.compare(&first) < 0);
    EXPECT_TRUE(!first.isEqual(&one) && !first.isEqual(nullptr) && first.compare(&one) == -1);

    const CmAssociation copy(first);
    EXPECT_TRUE(copy.key != first.key && copy.isEqual(&first));
    EXPECT_EQ(rankOf(copy.value), 2);
    copy.key->release();
    copy.value->release();
}

}  // namespace
}  // namespace Tessarine
