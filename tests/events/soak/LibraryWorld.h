#ifndef MORVAQNDS_SOAK_LIBRARYWORLD_H
#define MORVAQNDS_SOAK_LIBRARYWORLD_H

// The world as the library makes it.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <iterator>

#include "Converter.h"
#include "EventHandler.h"
#include "Exec.h"
#include "Obj.h"
#include "Script.h"
#include "Timer.h"

namespace soak {

/** Clock ticks that the next wait of the executive takes; the program's own `times` sees to it. */
extern long waitTicks;

class LibraryWorld : public World {
public:
    explicit LibraryWorld(std::uint64_t seed) : seed_(seed) {
        current() = this;
        for (int h = 0; h < Handlers; ++h) {
            int ends[2];
            if (pipe(ends) != 0) std::abort();
            // Handlers own descriptors from 10 on; the pipes themselves lie above.
            readEnds_[h] = fcntl(ends[0], F_DUPFD, 60);
            writeEnds_[h] = fcntl(ends[1], F_DUPFD, 60);
            close(ends[0]);
            close(ends[1]);
        }
        // The channels' tags are lower than those of the other properties.
        qnObj first;
        first.addInput("in", qnDT_void, nullptr, nullptr, 0);
        first.addOutput("out", qnDT_void);
        for (int tag = 0; tag < Tags; ++tag)
            tags_[tag] = qnProperty::allocNewTag(("tag" + std::to_string(tag)).c_str());
    }

    ~LibraryWorld() override {
        for (int h = 0; h < Handlers; ++h) {
            close(readEnds_[h]);
            close(writeEnds_[h]);
        }
    }

    void makeObject(int o) override {
        if (objects_[o] == nullptr) objects_[o] = new qnObj;
    }

    void destroyObject(int o) override {
        qnObj* object = objects_[o];
        objects_[o] = nullptr;
        delete object;
    }

    void addInput(int o, int name, Type type, bool latestOnly) override {
        if (objects_[o] == nullptr) return;
        ports_.push_back(Port{this, ++inputsMade_});
        Port* port = &ports_.back();
        const char* in = inputName(name);
        qnObj& object = *objects_[o];
        switch (type) {
            case Bool: object.addInput(in, port, &onBool, latestOnly); break;
            case Int: object.addInput(in, port, &onInt, latestOnly); break;
            case Long: object.addInput(in, port, &onLong, latestOnly); break;
            case Float: object.addInput(in, port, &onFloat, latestOnly); break;
            case Double: object.addInput(in, port, &onDouble, latestOnly); break;
            case Text: object.addInput(in, port, &onText, latestOnly); break;
            case String: object.addInput(in, port, &onString, latestOnly); break;
            default: object.addInput(in, port, &onSignal, latestOnly); break;
        }
    }

    void addOutput(int o, int name, Type type) override {
        if (objects_[o] != nullptr) objects_[o]->addOutput(outputName(name), code(type));
    }

    void removeInput(int o, int name) override {
        if (objects_[o] != nullptr) objects_[o]->removeInput(inputName(name));
    }

    void removeOutput(int o, int name) override {
        if (objects_[o] != nullptr) objects_[o]->removeOutput(outputName(name));
    }

    void flushInput(int o, int name) override {
        qnInputChannel* input = objects_[o] == nullptr ? nullptr : objects_[o]->findInput(inputName(name));
        if (input != nullptr) input->flush();
    }

    void connect(int from, int output, int to, int input) override {
        if (objects_[from] != nullptr) join(*objects_[from], outputName(output), to, input);
    }

    void disconnect(int from, int output, int to, int input) override {
        if (objects_[from] == nullptr || objects_[to] == nullptr) return;
        objects_[from]->disconnect(outputName(output), objects_[to], inputName(input));
    }

    void send(int o, int name, int n, int mode) override {
        if (objects_[o] == nullptr) return;
        qnObj& object = *objects_[o];
        qnOutputChannel* output = object.findOutput(outputName(name));
        if (output == nullptr) return;
        const qnObj::qnSendFlags flags = static_cast<qnObj::qnSendFlags>(mode);
        switch (typeOf(output->getType())) {
            case Bool: object.sendBool(output, static_cast<qnBool>(n % 256), flags); break;
            case Int: object.sendInt(output, n * 100, flags); break;
            case Long: object.sendLong(output, n, flags); break;
            case Float: object.sendFloat(output, static_cast<float>(n) + 0.5f, flags); break;
            case Double: object.sendDouble(output, n * 1.25, flags); break;
            case Text: object.sendCharPtr(output, std::to_string(n).c_str(), flags); break;
            case String: object.sendData(output, new qnStrData(qnStr(("s" + std::to_string(n)).c_str())), flags); break;
            default: object.sendVoid(output, flags); break;
        }
    }

    void distribute() override { qn_theEventHandler->distributeEvents(); }

    unsigned queued() const override { return qn_theEventHandler->count; }

    void setProperty(int o, int tag, int value) override {
        if (objects_[o] == nullptr) return;
        objects_[o]->setProperty(new qnProperty(tags_[tag], new int(value), &released));
    }

    void shareProperty(int from, int tag, int to) override {
        if (objects_[from] == nullptr || objects_[to] == nullptr) return;
        qnProperty* property = objects_[from]->findProperty(tags_[tag], nullptr);
        if (property != nullptr) objects_[to]->setProperty(property);
    }

    void removeProperty(int o, int tag) override {
        if (objects_[o] != nullptr) objects_[o]->removeProperty(tags_[tag]);
    }

    void removeAllProperties(int o) override {
        if (objects_[o] != nullptr) objects_[o]->removeAllProperties();
    }

    void makeTimer(int t, bool repeating, int quarters) override {
        if (timers_[t] != nullptr) return;
        timers_[t] = new Timer(*this, t, repeating);
        timers_[t]->setInterval(0.25f * static_cast<float>(quarters));
    }

    void destroyTimer(int t) override {
        Timer* timer = timers_[t];
        timers_[t] = nullptr;
        delete timer;
    }

    void startTimer(int t, int quarters) override {
        if (timers_[t] == nullptr) return;
        timers_[t]->setInterval(0.25f * static_cast<float>(quarters));
        timers_[t]->startTimer();
    }

    void stopTimer(int t) override {
        if (timers_[t] != nullptr) timers_[t]->stopTimer();
    }

    void connectTimer(int t, int to, int input) override {
        if (timers_[t] != nullptr) join(*timers_[t], "tick", to, input);
    }

    void alarm(int quarters) override { qnTimer::alarm(0.25f * static_cast<float>(quarters)); }

    void makeHandler(int h) override {
        if (handlers_[h] != nullptr) return;
        if (dup2(readEnds_[h], 10 + h) < 0) std::abort();
        handlers_[h] = new Handler(*this, h);
    }

    void destroyHandler(int h) override {
        Handler* handler = handlers_[h];
        if (handler == nullptr) return;
        qn_theExecutive->removeSelectHandler(handler);
        handlers_[h] = nullptr;
        delete handler;
    }

    void addHandler(int h) override {
        if (handlers_[h] != nullptr) qn_theExecutive->addSelectHandler(handlers_[h]);
    }

    void removeHandler(int h) override {
        if (handlers_[h] != nullptr) qn_theExecutive->removeSelectHandler(handlers_[h]);
    }

    void writePipe(int h) override {
        if (bytes_[h] >= 50) return;
        ++bytes_[h];
        if (write(writeEnds_[h], "x", 1) != 1) std::abort();
    }

    void addFunction(int f, bool before) override {
        int& count = before ? countBefore_ : countAfter_;
        if (count >= 5) return;
        ++count;
        if (before) {
            qn_theExecutive->addPreSelectFunc(functions(true)[f]);
        } else {
            qn_theExecutive->addPostSelectFunc(functions(false)[f]);
        }
        ++listed_[before][f];
    }

    void removeFunction(int f, bool before) override {
        if (listed_[before][f] > 0) {
            --listed_[before][f];
            --(before ? countBefore_ : countAfter_);
        }
        if (before) {
            qn_theExecutive->removePreSelectFunc(functions(true)[f]);
        } else {
            qn_theExecutive->removePostSelectFunc(functions(false)[f]);
        }
    }

    void poll(int quarters) override {
        waitTicks = quarters * sysconf(_SC_CLK_TCK) / 4;
        qn_theExecutive->poll(0);
    }

    bool empty() const override {
        const auto none = [](const void* place) { return place == nullptr; };
        return std::all_of(std::begin(objects_), std::end(objects_), none) &&
               std::all_of(std::begin(timers_), std::end(timers_), none) &&
               std::all_of(std::begin(handlers_), std::end(handlers_), none);
    }

private:
    /** The closure of an input; it outlives the object, as the input may. */
    struct Port {
        LibraryWorld* world;
        std::uint64_t number;
    };

    class Timer : public qnTimer {
    public:
        Timer(LibraryWorld& world, int place, bool repeating) : qnTimer(repeating), world_(world), place_(place) {}
        void tick() override {
            qnTimer::tick();
            world_.happen("tick " + std::to_string(place_));
        }

    private:
        LibraryWorld& world_;
        int place_;
    };

    class Handler : public qnSelectHandler {
    public:
        Handler(LibraryWorld& world, int place) : qnSelectHandler(10 + place, 1, 0, 0), world_(world), place_(place) {}
        const char* className() const override { return "Handler"; }
        void handleRead() override {
            char byte;
            if (read(descriptor, &byte, 1) != 1) std::abort();
            --world_.bytes_[place_];
            world_.happen("read " + std::to_string(place_));
        }

    private:
        LibraryWorld& world_;
        int place_;
    };

    static LibraryWorld*& current() {
        static LibraryWorld* world;
        return world;
    }

    void react(std::uint64_t count) override { reactTo(*this, seed_, count); }

    static void arrived(Port* port, const std::string& value) {
        port->world->happen("input " + std::to_string(port->number) + ' ' + value);
    }

    static std::string number(double value) {
        char text[64];
        std::snprintf(text, sizeof text, "%g", value);
        return text;
    }

    static void onSignal(Port* port) { arrived(port, "signal"); }
    static void onBool(Port* port, qnBool value) { arrived(port, std::to_string(value)); }
    static void onInt(Port* port, int value) { arrived(port, std::to_string(value)); }
    static void onLong(Port* port, long value) { arrived(port, std::to_string(value)); }
    static void onFloat(Port* port, float value) { arrived(port, number(static_cast<double>(value))); }
    static void onDouble(Port* port, double value) { arrived(port, number(value)); }
    static void onText(Port* port, const char* value) { arrived(port, value); }
    static void onString(Port* port, qnStr value) { arrived(port, value.text()); }

    static void released(void* pointer) {
        const int value = *static_cast<int*>(pointer);
        delete static_cast<int*>(pointer);
        current()->happen("release " + std::to_string(value));
    }

    template <int number, bool before>
    static void hook() {
        current()->happen((before ? "before " : "after ") + std::to_string(number));
    }

    static const qnStubFunc* functions(bool before) {
        static const qnStubFunc pre[Functions] = {&hook<0, true>, &hook<1, true>, &hook<2, true>};
        static const qnStubFunc post[Functions] = {&hook<0, false>, &hook<1, false>, &hook<2, false>};
        return before ? pre : post;
    }

    static const char* inputName(int name) {
        static const char* const names[Names] = {"level", "rate", "title", "state"};
        return names[name];
    }

    static const char* outputName(int name) {
        static const char* const names[Names] = {"alpha", "beta", "gamma", "delta"};
        return names[name];
    }

    static unsigned short code(Type type) {
        const unsigned short codes[TypeCount] = {qnDT_void,  qnDT_qnBool, qnDT_int,     qnDT_long,
                                                 qnDT_float, qnDT_double, qnDT_CharPtr, qnDT_qnStr};
        return codes[type];
    }

    static Type typeOf(unsigned short sought) {
        int type = 0;
        while (code(static_cast<Type>(type)) != sought) ++type;
        return static_cast<Type>(type);
    }

    void join(qnObj& from, const char* output, int to, int input) {
        if (objects_[to] == nullptr) return;
        const qnOutputChannel* out = from.findOutput(output);
        const qnInputChannel* in = objects_[to]->findInput(inputName(input));
        if (out == nullptr || in == nullptr) return;
        if (connects(typeOf(out->getType()), typeOf(in->getType())))
            from.connect(output, objects_[to], inputName(input));
    }

    const std::uint64_t seed_;
    std::uint64_t inputsMade_ = 0;
    std::deque<Port> ports_;
    qnObj* objects_[Objects] = {};
    Timer* timers_[Timers] = {};
    Handler* handlers_[Handlers] = {};
    int readEnds_[Handlers];
    int writeEnds_[Handlers];
    int bytes_[Handlers] = {};
    unsigned short tags_[Tags];
    int countBefore_ = 0;
    int countAfter_ = 0;
    int listed_[2][Functions] = {};
};

}  // namespace soak

#endif
