#ifndef MORVAQNDS_SOAK_WORLD_H
#define MORVAQNDS_SOAK_WORLD_H

// A small world of objects, channels, timers and descriptor handlers, in numbered places, and the operations that a
// script carries out on it. Two worlds implement it: the library's (LibraryWorld.h) and a model of the rules
// (ModelWorld.h). Everything that happens is written down in a log, and reacts by further operations; since what a
// reaction does depends only on how much was logged before, two worlds that follow the same rules keep the same log.

#include <cstdint>
#include <string>

namespace soak {

constexpr int Objects = 6;
constexpr int Names = 4;  ///< inputs, and outputs, that an object can have
constexpr int Tags = 5;
constexpr int Timers = 5;
constexpr int Handlers = 5;
constexpr int Functions = 3;
constexpr unsigned MaxQueue = 120;
constexpr int MaxDepth = 3;

/** The types of values that travel, in an order of this test's own. */
enum Type { Void, Bool, Int, Long, Float, Double, Text, String, TypeCount };

/** Whether an output of one type can be connected to an input of another. */
inline bool connects(Type from, Type to) {
    static const char* const table[TypeCount] = {
        "10000000",  // from Void to Void, Bool, Int, Long, Float, Double, Text, String
        "11101100",  // Bool
        "11101010",  // Int
        "10010000",  // Long
        "11101110",  // Float
        "11101110",  // Double
        "10101011",  // Text
        "10000011",  // String
    };
    return table[from][to] == '1';
}

/** What the places of a world may be told to do. Numbers are places; what is not there is left alone. */
class World {
public:
    virtual ~World() {}

    virtual void makeObject(int object) = 0;
    virtual void destroyObject(int object) = 0;
    virtual void addInput(int object, int name, Type type, bool latestOnly) = 0;
    virtual void addOutput(int object, int name, Type type) = 0;
    virtual void removeInput(int object, int name) = 0;
    virtual void removeOutput(int object, int name) = 0;
    virtual void flushInput(int object, int name) = 0;
    virtual void connect(int from, int output, int to, int input) = 0;
    virtual void disconnect(int from, int output, int to, int input) = 0;
    virtual void send(int object, int output, int value, int mode) = 0;
    virtual void distribute() = 0;

    virtual void setProperty(int object, int tag, int value) = 0;
    virtual void shareProperty(int from, int tag, int to) = 0;
    virtual void removeProperty(int object, int tag) = 0;
    virtual void removeAllProperties(int object) = 0;

    virtual void makeTimer(int timer, bool repeating, int quarters) = 0;
    virtual void destroyTimer(int timer) = 0;
    virtual void startTimer(int timer, int quarters) = 0;
    virtual void stopTimer(int timer) = 0;
    virtual void connectTimer(int timer, int to, int input) = 0;
    virtual void alarm(int quarters) = 0;

    virtual void makeHandler(int handler) = 0;
    virtual void destroyHandler(int handler) = 0;
    virtual void addHandler(int handler) = 0;
    virtual void removeHandler(int handler) = 0;
    virtual void writePipe(int handler) = 0;
    virtual void addFunction(int function, bool before) = 0;
    virtual void removeFunction(int function, bool before) = 0;
    virtual void poll(int quarters) = 0;

    /** Messages that wait. */
    virtual unsigned queued() const = 0;

    /** Whether there is no object, timer or handler. */
    virtual bool empty() const = 0;

    /** Destroys what there is. */
    void clear() {
        for (int t = 0; t < Timers; ++t) destroyTimer(t);
        for (int h = 0; h < Handlers; ++h) destroyHandler(h);
        for (int o = 0; o < Objects; ++o) destroyObject(o);
    }

    /** Everything that happened since the last look. */
    std::string takeLog() {
        std::string taken;
        taken.swap(log_);
        return taken;
    }

    /** Writes down what happened; then the script reacts, unless the world is too deep in reactions already. */
    void happen(const std::string& what) {
        log_ += what;
        log_ += '\n';
        ++happened_;
        if (depth_ >= MaxDepth) return;
        ++depth_;
        react(happened_);
        --depth_;
    }

    int depth() const { return depth_; }

protected:
    /** Carries out what follows from the `count`th thing that happened. */
    virtual void react(std::uint64_t count) = 0;

private:
    std::string log_;
    std::uint64_t happened_ = 0;
    int depth_ = 0;
};

}  // namespace soak

#endif
