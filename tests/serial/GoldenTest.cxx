// Stream files that every configuration has written are kept under golden/<configuration>/ and read by every other.
//
// MORVAQNDS_WRITE_GOLDEN=1 in the environment writes this configuration's files anew.
#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "NumberArrays.h"
#include "OrderedGlobal.h"
#include "Str.h"
#include "StrArray.h"
#include "StrSet.h"
#include "StrStrDictionary.h"
#include "support/MemoryStream.h"

namespace GoldenTest {

#if defined(__SANITIZE_ADDRESS__)
const char Configuration[] = "sanitize";
#elif defined(MORVAQNDS_CHECKED)
const char Configuration[] = "checked";
#elif defined(__clang__)
const char Configuration[] = "clang";
#elif defined(__i386__)
const char Configuration[] = "i386";
#elif defined(__powerpc__)
const char Configuration[] = "powerpc";
#else
const char Configuration[] = "release";
#endif

/** Everything that can be read back, in one object. */
class Everything : public qnXDRObj {
public:
    Everything() {}
    explicit Everything(qnTypeObj& type) : qnXDRObj(type) {}
    ~Everything() override {
        std::free(longPointer);
        std::free(unsignedPointer);
    }

    const char* className() const override { return "Everything"; }
    qnTypeObj& getTypeObj() const override;
    bool xdr(qnTranscriber& t) override {
        return t.xdr(qnXDRObj_type, this, static_cast<qnXDRObj*>(this)) && t.xdr(&letter, 1) && t.xdr(&small, 1) &&
               t.xdr(&number, 1) && t.xdr(&large, 1) && t.xdr(&unsignedLarge, 1) && t.xdr(&fraction, 1) &&
               t.xdr(&precise, 1) && text.xdr(t) && empty.xdr(t) && longs.xdr(t) && unsignedLongs.xdr(t) &&
               t.xdr(&longPointer, 3) && t.xdr(&unsignedPointer, 1) && names.xdr(t) && shorts.xdr(t) && pairs.xdr(t) &&
               words.xdr(t);
    }
    static void* newInstance(qnTypeObj& type) { return new Everything(type); }
    static void deleteInstance(void* object) { delete static_cast<Everything*>(object); }
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Everything*>(object)->Everything::xdr(t); }

    void set();
    void expect() const;

    char letter = 0;
    short small = 0;
    int number = 0;
    long large = 0;
    unsigned long unsignedLarge = 0;
    float fraction = 0;
    double precise = 0;
    qnStr text, empty;
    qnLongArray longs;
    qnUnsignedLongArray unsignedLongs;
    long* longPointer = nullptr;
    unsigned long* unsignedPointer = nullptr;
    qnStrArray names;
    qnShortArray shorts;
    qnStrStrDictionary pairs;
    qnStrSet words;
};
qnTypeObj Everything_type("golden.Everything", 1, Everything::newInstance, Everything::deleteInstance, Everything::xdr);
qnTypeObj& Everything::getTypeObj() const { return Everything_type; }

std::string longText() {
    std::string text;
    for (int i = 0; i < 600; ++i) text += static_cast<char>('a' + i % 26);
    return text;
}

void Everything::set() {
    letter = 'g';
    small = -12345;
    number = -1234567890;
    large = -2147483647L - 1;
    unsignedLarge = 4294967295ul;
    fraction = 0.1f;
    precise = -1e300;
    text = longText().c_str();
    longs.resize(200);
    for (int i = 0; i < 200; ++i) longs.elements()[i] = -i;
    unsignedLongs.resize(1);
    unsignedLongs.elements()[0] = 4000000000ul;
    longPointer = static_cast<long*>(std::malloc(3 * sizeof(long)));
    for (int i = 0; i < 3; ++i) longPointer[i] = i - 1;
    unsignedPointer = static_cast<unsigned long*>(std::malloc(sizeof(unsigned long)));
    *unsignedPointer = 4294967295ul;
    names.resize(3);
    names.elements()[0] = "zero";
    names.elements()[2] = "two";
    shorts.resize(2);
    shorts.elements()[0] = 1;
    shorts.elements()[1] = -1;
    for (const char* word : {"one", "two", "three", "four", "seventeen"}) {
        qnStr key(word), value(qnStr("value of ") + word);
        pairs.addInternal(&key, &value);
        words.add(&value);
    }
}

void Everything::expect() const {
    EXPECT_EQ('g', letter);
    EXPECT_EQ(-12345, small);
    EXPECT_EQ(-1234567890, number);
    EXPECT_EQ(-2147483647L - 1, large);
    EXPECT_EQ(4294967295ul, unsignedLarge);
    EXPECT_EQ(0.1f, fraction);
    EXPECT_EQ(-1e300, precise);
    EXPECT_TRUE(text == longText().c_str());
    EXPECT_EQ(0u, empty.length());
    ASSERT_EQ(200u, longs.length());
    for (int i = 0; i < 200; ++i) EXPECT_EQ(-i, longs.elements()[i]);
    ASSERT_EQ(1u, unsignedLongs.length());
    EXPECT_EQ(4000000000ul, unsignedLongs.elements()[0]);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(i - 1, longPointer[i]);
    EXPECT_EQ(4294967295ul, *unsignedPointer);
    ASSERT_EQ(3u, names.length());
    EXPECT_TRUE(names.elements()[0] == "zero");
    EXPECT_TRUE(names.elements()[1] == "");
    EXPECT_TRUE(names.elements()[2] == "two");
    ASSERT_EQ(2u, shorts.length());
    EXPECT_EQ(-1, shorts.elements()[1]);
    EXPECT_EQ(5u, pairs.count);
    qnStr key("seventeen");
    const qnStr* value = static_cast<const qnStr*>(pairs.find(&key, nullptr));
    ASSERT_NE(nullptr, value);
    EXPECT_TRUE(*value == "value of seventeen");
    EXPECT_EQ(5u, words.count);
    EXPECT_TRUE(words.contains(value));
    EXPECT_FALSE(words.contains(&key));
}

std::string write() {
    qnInitializeToolkit();
    MemoryStream* stream = new MemoryStream;
    qnRetain(stream);
    qnTranscriber* writer = qnTranscriber::getWriter(stream);
    qnRetain(writer);
    Everything object;
    object.set();
    EXPECT_TRUE(writer->writeObject(&object, &object));
    qnRelease(writer);
    std::string bytes = stream->output;
    qnRelease(stream);
    return bytes;
}

void readAndExpect(const std::string& bytes) {
    qnTranscriber* reader = qnTranscriber::getReader(new MemoryStream(bytes));
    ASSERT_NE(nullptr, reader);
    qnRetain(reader);
    Everything* object = static_cast<Everything*>(reader->readObject(Everything_type));
    qnRelease(reader);
    ASSERT_NE(nullptr, object);
    object->expect();
    delete object;
}

std::string contents(const std::string& path) {
    std::ostringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

TEST(Golden, WhatIsWrittenIsReadBack) { readAndExpect(write()); }

TEST(Golden, EveryConfigurationsFileIsReadAndHasTheSameBytes) {
    const std::string folder = MORVAQNDS_GOLDEN_DIR;
    std::string written = write();
    if (std::getenv("MORVAQNDS_WRITE_GOLDEN") != nullptr) {
        mkdir(folder.c_str(), 0755);
        mkdir((folder + "/" + Configuration).c_str(), 0755);
        std::ofstream(folder + "/" + Configuration + "/everything.qn", std::ios::binary) << written;
    }
    unsigned files = 0;
    DIR* directory = opendir(folder.c_str());
    ASSERT_NE(nullptr, directory);
    while (dirent* entry = readdir(directory)) {
        if (entry->d_name[0] == '.') continue;
        std::string kept = contents(folder + "/" + entry->d_name + "/everything.qn");
        bool sameOrder = kept.substr(20, 6) == written.substr(20, 6);
        if (!sameOrder) continue;  // the numbers in its records are in the other order, and are not converted
        ++files;
        EXPECT_EQ(hex(kept), hex(written)) << entry->d_name;
        readAndExpect(kept);
    }
    closedir(directory);
    EXPECT_LE(5u, files);
}

}  // namespace GoldenTest
