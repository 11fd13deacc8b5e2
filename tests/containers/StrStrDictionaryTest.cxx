#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "StrStrDictionary.h"

namespace StrStrDictionaryTest {

void put(qnStrStrDictionary& d, const char* key, const char* value) {
    qnStr k(key), v(value);
    d.addInternal(&k, &v);
}

/** The value of a key, or null. */
const char* get(const qnStrStrDictionary& d, const char* key) {
    qnStr k(key);
    void* value = d.find(&k, nullptr);
    return value == nullptr ? nullptr : static_cast<qnStr*>(value)->text();
}

const char longText[] = "a text of more than one word, so that its block is worth watching";

TEST(StrStrDictionary, HasStringRecordsAnd31Buckets) {
    qnStrStrDictionary d, sized(7);
    EXPECT_EQ(d.keySize, sizeof(qnStr));
    EXPECT_EQ(d.valueSize, sizeof(qnStr));
    EXPECT_EQ(d.buckets.length(), 31u);
    EXPECT_EQ(sized.buckets.length(), 7u);
#if UINTPTR_MAX == 0xFFFFFFFF
    EXPECT_EQ(d.keySize, 8u);
    EXPECT_EQ(d.valueSize, 8u);
#endif
}

TEST(StrStrDictionary, IsCalledDictLikeItsType) {
    qnStrStrDictionary d;
    EXPECT_STREQ(d.className(), "DICT");
    EXPECT_EQ(&d.getTypeObj(), &qnStrStrDictionary_type);
    EXPECT_STREQ(qnStrStrDictionary_type.name, "DICT");
    EXPECT_EQ(qnStrStrDictionary_type.version, 1u);
    EXPECT_EQ(qnTypeObj::findType("DICT"), &qnStrStrDictionary_type);
}

TEST(StrStrDictionary, HashesAndComparesAsStringsDo) {
    qnStrStrDictionary d;
    qnStr a("a"), b("b"), alike("abcdefgh"), alikeToo("abcdefghXYZ"), empty;
    EXPECT_EQ(d.hashKey(&a), 0x08000000u);
    EXPECT_EQ(d.hashKey(&empty), 0u);
    EXPECT_EQ(d.hashKey(&alike), d.hashKey(&alikeToo));
    EXPECT_LT(d.compareKeys(&a, &b), 0);
    EXPECT_GT(d.compareKeys(&b, &a), 0);
    EXPECT_EQ(d.compareKeys(&a, &a), 0);
}

TEST(StrStrDictionary, KeysThatHashAlikeAreTwoEntries) {
    qnStrStrDictionary d;
    put(d, "abcdefgh", "1");
    put(d, "abcdefghXYZ", "2");
    EXPECT_EQ(d.count, 2u);
    EXPECT_STREQ(get(d, "abcdefgh"), "1");
    EXPECT_STREQ(get(d, "abcdefghXYZ"), "2");
    EXPECT_EQ(get(d, "abcdefghX"), nullptr);
}

TEST(StrStrDictionary, OwnsCopiesOfKeysAndValues) {
    qnStrStrDictionary d;
    {
        qnStr key(longText), value(longText);
        d.addInternal(&key, &value);
        key = "changed";
        value = "changed";
    }
    EXPECT_STREQ(get(d, longText), longText);
    EXPECT_EQ(get(d, "changed"), nullptr);
}

TEST(StrStrDictionary, ReplacesAValueAndKeepsTheKeysText) {
    qnStrStrDictionary d;
    put(d, longText, longText);
    qnStrStrDictionaryIter it(d);
    const char* keyText = static_cast<qnStr*>(it.getKey())->text();
    put(d, longText, "short");
    EXPECT_EQ(static_cast<qnStr*>(it.getKey())->text(), keyText);
    EXPECT_STREQ(get(d, longText), "short");
    EXPECT_EQ(d.count, 1u);
}

TEST(StrStrDictionary, EmptyKeyAndEmptyValueAreEntriesLikeOthers) {
    qnStrStrDictionary d;
    put(d, "", "");
    EXPECT_EQ(d.count, 1u);
    EXPECT_STREQ(get(d, ""), "");
    EXPECT_NE(d.buckets.elements()[0], nullptr) << "the empty text hashes to 0";
}

TEST(StrStrDictionary, FindCreateMakesAnEmptyStringWithoutABlock) {
    qnStrStrDictionary d;
    qnStr key("new");
    qnStr* value = static_cast<qnStr*>(d.findCreate(&key));
    EXPECT_EQ(value->data, &qnStr::emptyString);
    EXPECT_EQ(value->slength, 1u);
    value->append(longText);
    EXPECT_EQ(d.findCreate(&key), value);
    EXPECT_STREQ(get(d, "new"), longText);
}

TEST(StrStrDictionary, AddingAnEntrysOwnValueLeavesIt) {
    qnStrStrDictionary d;
    put(d, "key", longText);
    qnStr key("key");
    d.addInternal(&key, d.find(&key, nullptr));
    EXPECT_STREQ(get(d, "key"), longText);
    EXPECT_EQ(d.count, 1u);
}

TEST(StrStrDictionary, AddingUnderAnEntrysOwnKeyRecordWorks) {
    qnStrStrDictionary d;
    put(d, longText, "old");
    qnStrStrDictionaryIter it(d);
    d.addInternal(it.getKey(), it.getKey());
    EXPECT_STREQ(get(d, longText), longText) << "the key's text is the value's now";
}

TEST(StrStrDictionary, AddingUnderAnEntrysOwnValueWorks) {
    qnStrStrDictionary d;
    put(d, longText, longText);
    qnStrStrDictionaryIter it(d);
    qnStr other("other");
    d.addInternal(it.getValue(), &other);
    EXPECT_STREQ(get(d, longText), "other");
}

TEST(StrStrDictionary, RemoveByTheKeyAndByTheValueOfTheEntryItself) {
    qnStrStrDictionary d;
    put(d, longText, longText);
    put(d, "k", "k");
    for (qnStrStrDictionaryIter it(d); it.dict != nullptr; ++it) d.remove(it.getValue());
    EXPECT_EQ(d.count, 0u);
}

TEST(StrStrDictionary, CutGivesTheStringAwayWithItsText) {
    qnStrStrDictionary d;
    put(d, "key", longText);
    qnStr key("key");
    const char* text = get(d, "key");
    qnStr* value = static_cast<qnStr*>(d.cut(&key));
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->text(), text) << "moved, not copied";
    EXPECT_EQ(d.count, 0u);
    EXPECT_EQ(d.cut(&key), nullptr);
    value->~qnStr();
    std::free(value);
}

TEST(StrStrDictionary, CopyIsDeep) {
    qnStrStrDictionary source(7);
    put(source, longText, longText);
    qnStrStrDictionary copy(source);
    EXPECT_NE(get(copy, longText), get(source, longText));
    put(source, longText, "changed");
    EXPECT_STREQ(get(copy, longText), longText);
    EXPECT_EQ(copy.buckets.length(), 7u);
    EXPECT_EQ(copy.count, 1u);
}

// Deliberate: assignment merges; see DictionaryTest.
TEST(StrStrDictionary, AssignmentMergesDeeply) {
    qnStrStrDictionary target, source;
    put(target, "kept", longText);
    put(target, "both", longText);
    put(source, "both", "of the source");
    put(source, "new", longText);
    qnStrStrDictionary& result = (target = source);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.count, 3u);
    EXPECT_STREQ(get(target, "kept"), longText);
    EXPECT_STREQ(get(target, "both"), "of the source");
    EXPECT_STREQ(get(target, "new"), longText);
    EXPECT_NE(get(target, "new"), get(source, "new"));
    qnStrStrDictionary& self = target;
    target = self;
    EXPECT_EQ(target.count, 3u);
}

TEST(StrStrDictionary, FactoryMakesOneWithoutBucketsThatMissesLookups) {
    qnStrStrDictionary* d =
        static_cast<qnStrStrDictionary*>(qnStrStrDictionary_type.newInstance(qnStrStrDictionary_type));
    EXPECT_EQ(d->buckets.length(), 0u);
    EXPECT_EQ(d->count, 0u);
    EXPECT_EQ(d->refCount, 0u);
    EXPECT_EQ(d->keySize, sizeof(qnStr));
    EXPECT_EQ(d->valueSize, sizeof(qnStr));
    EXPECT_EQ(get(*d, "a"), nullptr);
    qnStrStrDictionaryIter it(d);
    EXPECT_EQ(it.dict, nullptr);
    qnStrStrDictionary_type.deleteInstance(d);
}

TEST(StrStrDictionary, DeletingNullDoesNothing) { qnStrStrDictionary::deleteInstance(nullptr); }

TEST(StrStrDictionary, DestructorDetachesItsIterators) {
    qnStrStrDictionaryIter it;
    {
        qnStrStrDictionary d;
        put(d, "a", "b");
        it = d;
        ASSERT_NE(it.getKey(), nullptr);
    }
    EXPECT_EQ(it.dict, nullptr);
    EXPECT_EQ(it.getKey(), nullptr);
    EXPECT_EQ(it.getValue(), nullptr);
}

TEST(StrStrDictionary, HoldsWhatAMapHoldsAfterManyChanges) {
    qnStrStrDictionary d(13);
    std::map<std::string, std::string> model;
    unsigned state = 12345;
    for (int step = 0; step < 20000; ++step) {
        state = state * 1103515245u + 12345u;
        std::string key = "k" + std::to_string((state >> 16) % 300), value = std::to_string(step);
        qnStr k(key.c_str());
        switch ((state >> 8) % 3) {
            case 0:
                d.remove(&k);
                model.erase(key);
                break;
            case 1:
                *static_cast<qnStr*>(d.findCreate(&k)) = value.c_str();
                model[key] = value;
                break;
            default: put(d, key.c_str(), value.c_str()); model[key] = value;
        }
    }
    ASSERT_EQ(d.count, model.size());
    unsigned visited = 0;
    for (qnStrStrDictionaryIter it(d); it.dict != nullptr; ++it, ++visited) {
        const char* key = static_cast<qnStr*>(it.getKey())->text();
        ASSERT_EQ(model.count(key), 1u) << key;
        EXPECT_EQ(model[key], static_cast<qnStr*>(it.getValue())->text());
    }
    EXPECT_EQ(visited, model.size());
}

TEST(StrStrDictionaryDeathTest, AddingToAFactoryMadeOneIsFatal) {
    qnStrStrDictionary d(qnStrStrDictionary_type);
    EXPECT_EXIT(put(d, "a", "b"), testing::KilledBySignal(SIGABRT),
                "^qnDictionary::addInternal: the dictionary has no buckets\n$");
}

}  // namespace StrStrDictionaryTest
