// Writing and reading object graphs: numbers, strings and objects, with the time for each of them.
#include <benchmark/benchmark.h>
#include <morvaqnds.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

class Node : public qnXDRObj {
public:
    Node() {}
    explicit Node(qnTypeObj& type) : qnXDRObj(type) {}
    const char* className() const override { return "Node"; }
    bool xdr(qnTranscriber& t) override;
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type) { return new Node(type); }
    static void deleteInstance(void* object) { delete static_cast<Node*>(object); }
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Node*>(object)->Node::xdr(t); }

    int value = 0;
    Node* next = nullptr;
};
qnTypeObj Node_type("bench.Node", 1, Node::newInstance, Node::deleteInstance, Node::xdr);
qnTypeObj& Node::getTypeObj() const { return Node_type; }
bool Node::xdr(qnTranscriber& t) { return t.xdr(&value, 1) && t.xdr(&next, next, Node_type); }

/** An array of longs as an object of its own. */
class Numbers : public qnXDRObj {
public:
    Numbers() {}
    explicit Numbers(qnTypeObj& type) : qnXDRObj(type) {}
    bool xdr(qnTranscriber& t) override { return array.xdr(t); }
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type) { return new Numbers(type); }
    static void deleteInstance(void* object) { delete static_cast<Numbers*>(object); }
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Numbers*>(object)->Numbers::xdr(t); }

    qnLongArray array;
};
qnTypeObj Numbers_type("bench.Numbers", 1, Numbers::newInstance, Numbers::deleteInstance, Numbers::xdr);
qnTypeObj& Numbers::getTypeObj() const { return Numbers_type; }

/** Pointers to many small arrays of ints. */
class Arrays : public qnXDRObj {
public:
    Arrays() {}
    explicit Arrays(qnTypeObj& type) : qnXDRObj(type) {}
    ~Arrays() override {
        for (int* array : arrays) std::free(array);
    }
    void fill(unsigned n) {
        arrays.resize(n);
        for (unsigned i = 0; i < n; ++i) {
            arrays[i] = static_cast<int*>(std::malloc(Ints * sizeof(int)));
            for (unsigned k = 0; k < Ints; ++k) arrays[i][k] = static_cast<int>(i + k);
        }
    }
    bool xdr(qnTranscriber& t) override {
        unsigned n = static_cast<unsigned>(arrays.size());
        if (!t.xdr(&n, 1)) return false;
        if (t.reading) arrays.resize(n);
        for (int*& array : arrays) {
            if (!t.xdr(&array, Ints)) return false;
        }
        return true;
    }
    qnTypeObj& getTypeObj() const override;
    static void* newInstance(qnTypeObj& type) { return new Arrays(type); }
    static void deleteInstance(void* object) { delete static_cast<Arrays*>(object); }
    static bool xdr(void* object, qnTranscriber& t) { return static_cast<Arrays*>(object)->Arrays::xdr(t); }

    static constexpr unsigned Ints = 4;
    std::vector<int*> arrays;
};
qnTypeObj Arrays_type("bench.Arrays", 1, Arrays::newInstance, Arrays::deleteInstance, Arrays::xdr);
qnTypeObj& Arrays::getTypeObj() const { return Arrays_type; }

std::FILE* scratch() {
    static std::FILE* file = std::tmpfile();
    return file;
}

/** A stream over a file that stays open when the stream goes. */
class ScratchStream : public qnStdioStream {
public:
    explicit ScratchStream(qnStreamType direction) : qnStdioStream(scratch(), direction) { std::rewind(scratch()); }
    ~ScratchStream() override {
        std::fflush(file);
        file = nullptr;
    }
};

bool write(qnXDRObj& root) {
    qnTranscriber* writer = qnTranscriber::getWriter(new ScratchStream(qnStream::Write));
    qnRetain(writer);
    bool written = writer->writeObject(&root, &root);
    qnRelease(writer);
    return written;
}

void* read() {
    qnTranscriber* reader = qnTranscriber::getReader(new ScratchStream(qnStream::Read));
    qnRetain(reader);
    void* root = reader->readObject(qnXDRObj_type);
    qnRelease(reader);
    return root;
}

void report(benchmark::State& state) {
    state.counters["per_element"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

qnStrArray strings(unsigned n) {
    qnStrArray array(n);
    for (unsigned i = 0; i < n; ++i) array.elements()[i].format("string %u", i);
    return array;
}

void WriteStrings(benchmark::State& state) {
    qnStrArray array(strings(static_cast<unsigned>(state.range(0))));
    for (auto _ : state) {
        if (!write(array)) state.SkipWithError("not written");
    }
    report(state);
}

void ReadStrings(benchmark::State& state) {
    qnStrArray array(strings(static_cast<unsigned>(state.range(0))));
    write(array);
    for (auto _ : state) {
        qnStrArray* got = static_cast<qnStrArray*>(read());
        if (got == nullptr || got->length() != array.length()) state.SkipWithError("not read");
        state.PauseTiming();
        delete got;
        state.ResumeTiming();
    }
    report(state);
}

void WriteNumbers(benchmark::State& state) {
    Numbers numbers;
    numbers.array.resize(static_cast<unsigned>(state.range(0)));
    for (unsigned i = 0; i < numbers.array.length(); ++i) numbers.array.elements()[i] = static_cast<long>(i);
    for (auto _ : state) {
        if (!write(numbers)) state.SkipWithError("not written");
    }
    report(state);
}

void ReadNumbers(benchmark::State& state) {
    Numbers numbers;
    numbers.array.resize(static_cast<unsigned>(state.range(0)));
    for (unsigned i = 0; i < numbers.array.length(); ++i) numbers.array.elements()[i] = static_cast<long>(i);
    write(numbers);
    for (auto _ : state) {
        std::unique_ptr<Numbers> got(static_cast<Numbers*>(read()));
        if (!got || got->array.length() != numbers.array.length()) state.SkipWithError("not read");
    }
    report(state);
}

void WriteArrays(benchmark::State& state) {
    Arrays arrays;
    arrays.fill(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) {
        if (!write(arrays)) state.SkipWithError("not written");
    }
    report(state);
}

void ReadArrays(benchmark::State& state) {
    {
        Arrays arrays;
        arrays.fill(static_cast<unsigned>(state.range(0)));
        write(arrays);
    }
    for (auto _ : state) {
        Arrays* got = static_cast<Arrays*>(read());
        if (got == nullptr) state.SkipWithError("not read");
        state.PauseTiming();
        delete got;
        state.ResumeTiming();
    }
    report(state);
}

void WriteObjects(benchmark::State& state) {
    std::unique_ptr<Node[]> nodes(new Node[static_cast<std::size_t>(state.range(0))]);
    for (long i = 0; i + 1 < state.range(0); ++i)
        nodes[static_cast<std::size_t>(i)].next = &nodes[static_cast<std::size_t>(i) + 1];
    for (auto _ : state) {
        if (!write(nodes[0])) state.SkipWithError("not written");
    }
    report(state);
}

/** The records of a list of objects, as a reader takes them: a pointer record of two words. */
void writeReadableList(unsigned n) {
    std::FILE* file = scratch();
    std::rewind(file);
    auto word = [file](unsigned value) { std::fwrite(&value, sizeof value, 1, file); };
    std::fwrite("qnBinaryWriter\0ieee", 1, 20, file);
    short mark = 0x1122;
    std::fwrite(&mark, 2, 1, file);
    word(0x33445566);
    std::fputc(2, file);
    word(2);
    std::fwrite("bench.Node", 1, 11, file);
    for (unsigned i = 0; i < n; ++i) {
        std::fputc(0x4A, file);
        std::fputc(4, file);
        word(i == 0 ? 1 : i + 2);
        word(2);
        word(1);
        word(i);
        if (i + 1 == n) {
            std::fputc(1, file);
        } else {
            std::fputc(11, file);
            word(i + 3);
            word(0);
        }
    }
    std::fflush(file);
}

void ReadObjects(benchmark::State& state) {
    writeReadableList(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) {
        Node* node = static_cast<Node*>(read());
        if (node == nullptr) state.SkipWithError("not read");
        state.PauseTiming();
        while (node != nullptr) {
            Node* next = node->next;
            delete node;
            node = next;
        }
        state.ResumeTiming();
    }
    report(state);
}

const bool ready = [] {
    qnInitializeToolkit();
    return true;
}();

#define SIZES Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)
BENCHMARK(WriteNumbers)->SIZES;
BENCHMARK(ReadNumbers)->SIZES;
BENCHMARK(WriteStrings)->SIZES;
BENCHMARK(ReadStrings)->SIZES;
BENCHMARK(WriteArrays)->SIZES;
BENCHMARK(ReadArrays)->SIZES;
BENCHMARK(WriteObjects)->SIZES;
BENCHMARK(ReadObjects)->SIZES;

}  // namespace
