// Writing and reading are linear: the time for each object hardly depends on how many there are.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "BinaryReader.h"
#include "BinaryWriter.h"
#include "StrArray.h"
#include "support/Bytes.h"
#include "support/MemoryStream.h"
#include "support/Records.h"

namespace LinearTest {

const unsigned Few = 5000;
const unsigned Many = 100000;

template <class Work>
double secondsFor(Work work) {
    double best = 1e9;
    for (int round = 0; round < 3; ++round) {
        std::clock_t start = std::clock();
        work();
        best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return best;
}

/** Twenty times as many may take 160 times as long, caches and neighbours being what they are; quadratic work takes
 * 400. */
template <class Work>
void expectLinear(Work work) {
    double few = secondsFor([&] { work(Few); });
    double many = secondsFor([&] { work(Many); });
    EXPECT_LT(many / Many, 8 * few / Few);
}

std::string write(qnXDRObj& root) {
    MemoryStream* stream = new MemoryStream;
    qnRetain(stream);
    {
        qnBinaryWriter writer(stream);
        EXPECT_TRUE(writer.writeObject(&root, &root));
    }
    std::string bytes = stream->output;
    qnRelease(stream);
    return bytes;
}

TEST(Linear, WritingObjects) {
    expectLinear([](unsigned n) {
        std::vector<Probe> probes(n);
        for (unsigned i = 0; i < n; ++i) {
            Probe* next = i + 1 < n ? &probes[i + 1] : nullptr;
            probes[i].first = next;
            probes[i].body = [](qnTranscriber& t, Probe& self) {
                return t.xdr(&self.first, self.first, Probe::type());
            };
        }
        write(probes[0]);
    });
}

TEST(Linear, WritingPrimitiveArrays) {
    expectLinear([](unsigned n) {
        std::vector<int> numbers(4 * std::size_t(n));
        Probe root([&](qnTranscriber& t, Probe&) {
            for (unsigned i = 0; i < n; ++i) {
                int* array = &numbers[4 * std::size_t(i)];
                if (!t.xdr(&array, 4)) return false;
            }
            return true;
        });
        write(root);
    });
}

TEST(Linear, ReadingPrimitiveArrays) {
    static std::vector<int*> arrays;
    Probe::type();
    Probe::onRead() = [](qnTranscriber& t, Probe&) {
        for (int*& array : arrays) {
            if (!t.xdr(&array, 4)) return false;
        }
        return true;
    };
    expectLinear([](unsigned n) {
        Bytes records = Bytes::type(2, "Probe").u8(0x0A).u32(1).u32(2).u32(1);
        for (unsigned i = 0; i < n; ++i) records.u8(0x03).u32(i + 3).u32(16);
        for (unsigned i = n; i > 0; --i) {
            records.u8(0x47).u8(16).u32(i + 2).u32(16).u32(i).u32(0).u32(0).u32(i);
        }
        arrays.assign(n, nullptr);
        qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
        delete static_cast<Probe*>(reader.readObject(Probe::type()));
        for (unsigned i = 0; i < n; ++i) {
            ASSERT_NE(nullptr, arrays[i]);
            ASSERT_EQ(static_cast<int>(i + 1), arrays[i][3]);
            std::free(arrays[i]);
        }
    });
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
}

TEST(Linear, WritingAndReadingStrings) {
    expectLinear([](unsigned n) {
        qnStrArray strings(n);
        for (unsigned i = 0; i < n; ++i) strings.elements()[i].format("string %u", i);
        qnBinaryReader reader(new MemoryStream(write(strings)), 0x1122, 0x33445566, "ieee");
        qnStrArray* got = static_cast<qnStrArray*>(reader.readObject(qnStrArray_type));
        ASSERT_NE(nullptr, got);
        ASSERT_EQ(n, got->length());
        for (unsigned i = 0; i < n; ++i) ASSERT_TRUE(got->elements()[i] == strings.elements()[i]);
        delete got;
    });
}

TEST(Linear, ReadingObjects) {
    Probe::type();
    Probe::onRead() = [](qnTranscriber& t, Probe& self) { return t.xdr(&self.first, nullptr, Probe::type()); };
    expectLinear([](unsigned n) {
        Bytes records = Bytes::type(2, "Probe").u8(0x0A).u32(1).u32(2).u32(1);
        for (unsigned i = 1; i < n; ++i) records.u8(0x0B).u32(i + 2).u32(0).u8(0x0A).u32(i + 2).u32(2).u32(1);
        records.u8(0x01);
        qnBinaryReader reader(new MemoryStream(records.str()), 0x1122, 0x33445566, "ieee");
        Probe* probe = static_cast<Probe*>(reader.readObject(Probe::type()));
        unsigned count = 0;
        while (probe != nullptr) {
            Probe* next = probe->first;
            delete probe;
            probe = next;
            ++count;
        }
        ASSERT_EQ(n, count);
    });
    Probe::onRead() = [](qnTranscriber&, Probe&) { return true; };
}

}  // namespace LinearTest
