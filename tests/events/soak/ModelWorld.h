#ifndef MORVAQNDS_SOAK_MODELWORLD_H
#define MORVAQNDS_SOAK_MODELWORLD_H

// The rules, as plainly as they can be said: shared pointers for what is held, snapshots with a mark for what has gone,
// absolute times for timers.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <iterator>
#include <map>
#include <memory>
#include <vector>

#include "Script.h"

namespace soak {

/** A value on its way: numbers in `number`, texts in `text`. */
struct Value {
    Type type;
    double number;
    std::string text;
};

inline std::string printed(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

/** What a send of `n` on an output of some type carries. */
inline Value valueFor(Type type, int n) {
    switch (type) {
        case Bool: return {Bool, static_cast<double>(n % 256), ""};
        case Int: return {Int, n * 100.0, ""};
        case Long: return {Long, static_cast<double>(n), ""};
        case Float: return {Float, n + 0.5, ""};
        case Double: return {Double, n * 1.25, ""};
        case Text: return {Text, 0, std::to_string(n)};
        case String: return {String, 0, "s" + std::to_string(n)};
        default: return {Void, 0, ""};
    }
}

template <class Bits, class Number>
int lowestByte(Number number) {
    Bits bits;
    std::memcpy(&bits, &number, sizeof bits);
    return static_cast<int>(bits % 256);
}

inline Value converted(const Value& value, Type to) {
    const double n = value.type == Text && to != String ? std::atof(value.text.c_str()) : value.number;
    switch (to) {
        case Bool:
            if (value.type == Float) return {Bool, 0.0 + lowestByte<std::uint32_t>(static_cast<float>(n)), ""};
            if (value.type == Double) return {Bool, 0.0 + lowestByte<std::uint64_t>(n), ""};
            return {Bool, std::fmod(n, 256), ""};
        case Int: return {Int, std::trunc(n), ""};
        case Float: return {Float, n, ""};
        case Double: return {Double, n, ""};
        case Text:
            if (value.type == String) return {Text, 0, value.text};
            return {Text, 0, printed(value.type == Int ? "%.0f" : "%g", n)};
        case String: return {String, 0, value.text};
        default: return value;
    }
}

inline std::string shown(const Value& value, Type as) {
    switch (as) {
        case Void: return "signal";
        case Text:
        case String: return value.text;
        case Float:
        case Double: return printed("%g", value.number);
        default: return printed("%.0f", value.number);
    }
}

class ModelWorld : public World {
public:
    explicit ModelWorld(std::uint64_t seed) : seed_(seed) {}

    // Objects and channels.

    void makeObject(int o) override {
        if (!objects_[o]) objects_[o] = std::make_shared<Object>();
    }

    void destroyObject(int o) override {
        const std::shared_ptr<Object> object = std::move(objects_[o]);
        if (object) releaseAll(*object);
    }

    void addInput(int o, int name, Type type, bool latestOnly) override {
        if (!objects_[o]) return;
        std::shared_ptr<Target> input = std::make_shared<Target>();
        input->type = type;
        input->latestOnly = latestOnly;
        input->number = ++inputsMade_;
        objects_[o]->inputs[name] = input;
    }

    void addOutput(int o, int name, Type type) override {
        if (!objects_[o]) return;
        std::shared_ptr<Output>& place = objects_[o]->outputs[name];
        endAll(place);
        place = newOutput(type);
    }

    void removeInput(int o, int name) override {
        if (!objects_[o] || !objects_[o]->inputs.count(name)) return;
        const std::shared_ptr<Target> input = objects_[o]->inputs[name];
        objects_[o]->inputs.erase(name);
        retire(input);
    }

    void removeOutput(int o, int name) override {
        if (!objects_[o] || !objects_[o]->outputs.count(name)) return;
        endAll(objects_[o]->outputs[name]);
        objects_[o]->outputs.erase(name);
    }

    void flushInput(int o, int name) override {
        if (objects_[o] && objects_[o]->inputs.count(name)) flush(objects_[o]->inputs[name]);
    }

    void connect(int from, int output, int to, int input) override {
        std::shared_ptr<Output> out = outputOf(from, output);
        std::shared_ptr<Target> in = inputOf(to, input);
        if (out && in) join(*out, in);
    }

    void disconnect(int from, int output, int to, int input) override {
        std::shared_ptr<Output> out = outputOf(from, output);
        std::shared_ptr<Target> in = inputOf(to, input);
        if (out && in) part(*out, in);
    }

    void send(int o, int name, int n, int mode) override {
        const std::shared_ptr<Output> output = outputOf(o, name);
        if (output) post(*output, valueFor(output->type, n), mode);
    }

    void distribute() override {
        for (std::size_t n = queue_.size(); n > 0 && !queue_.empty(); --n) {
            const std::shared_ptr<Message> message = queue_.front();
            queue_.pop_front();
            message->queued = false;
            message->target->pending = nullptr;
            deliver(message->target, message->value);
        }
    }

    unsigned queued() const override { return static_cast<unsigned>(queue_.size()); }

    // Properties.

    void setProperty(int o, int tag, int value) override {
        if (!objects_[o]) return;
        put(objects_[o], tag, std::make_shared<Property>(Property{value, 0}));
    }

    void shareProperty(int from, int tag, int to) override {
        if (!objects_[from] || !objects_[to] || !objects_[from]->properties.count(tag)) return;
        put(objects_[to], tag, objects_[from]->properties[tag]);
    }

    void removeProperty(int o, int tag) override {
        if (!objects_[o] || !objects_[o]->properties.count(tag)) return;
        const std::shared_ptr<Property> property = objects_[o]->properties[tag];
        objects_[o]->properties.erase(tag);
        letGo(*property);
    }

    void removeAllProperties(int o) override {
        const std::shared_ptr<Object> object = objects_[o];
        if (object) releaseAll(*object);
    }

    // Timers.

    void makeTimer(int t, bool repeating, int quarters) override {
        if (timers_[t]) return;
        timers_[t] = std::make_shared<Timer>();
        timers_[t]->place = t;
        timers_[t]->repeating = repeating;
        timers_[t]->interval = quarters;
        timers_[t]->output = newOutput(Void);
    }

    void destroyTimer(int t) override {
        if (!timers_[t]) return;
        const std::shared_ptr<Timer> timer = std::move(timers_[t]);
        stop(timer);
        timer->destroyed = true;
        endAll(timer->output);
    }

    void startTimer(int t, int quarters) override {
        if (!timers_[t]) return;
        stop(timers_[t]);
        timers_[t]->interval = quarters;
        if (timers_[t] != ticking_) timers_[t]->firedAt = -1;  // it may fire once more at this moment
        arm(timers_[t]);
    }

    void stopTimer(int t) override {
        if (timers_[t]) stop(timers_[t]);
    }

    void connectTimer(int t, int to, int input) override {
        std::shared_ptr<Target> in = inputOf(to, input);
        if (timers_[t] && in) join(*timers_[t]->output, in);
    }

    void alarm(int quarters) override {
        if (active_.empty()) return;
        const long end = now_ + quarters;
        std::vector<std::shared_ptr<Timer>> again;
        while (!active_.empty() && active_.front()->due <= end) {
            const std::shared_ptr<Timer> timer = active_.front();
            active_.erase(active_.begin());
            now_ = timer->due;
            if (timer->firedAt == now_ && timer->firedIn == pass_) {
                waiting_.push_back(timer);
                continue;
            }
            timer->active = false;
            timer->firedAt = now_;
            timer->firedIn = pass_;
            ticking_ = timer;
            fire(timer);
            ticking_.reset();
            if (!timer->destroyed && timer->repeating) again.push_back(timer);
        }
        now_ = end;
        ++pass_;
        std::vector<std::shared_ptr<Timer>> waiting;
        waiting.swap(waiting_);
        for (const std::shared_ptr<Timer>& timer : waiting) arm(timer);
        for (const std::shared_ptr<Timer>& timer : again) {
            if (!timer->destroyed && !timer->active) arm(timer);
        }
    }

    // The cycle.

    void makeHandler(int h) override {
        if (!handlers_[h]) handlers_[h] = std::make_shared<Handler>();
    }

    void destroyHandler(int h) override {
        if (!handlers_[h]) return;
        handlers_[h]->destroyed = true;
        table_[h] = nullptr;
        handlers_[h] = nullptr;
    }

    void addHandler(int h) override {
        if (handlers_[h]) table_[h] = handlers_[h];
    }

    void removeHandler(int h) override {
        if (handlers_[h]) table_[h] = nullptr;
    }

    void writePipe(int h) override {
        if (bytes_[h] < 50) ++bytes_[h];
    }

    void addFunction(int f, bool before) override {
        std::vector<std::shared_ptr<Hook>>& hooks = before ? before_ : after_;
        if (hooks.size() < 5) hooks.push_back(std::make_shared<Hook>(Hook{f, true}));
    }

    void removeFunction(int f, bool before) override {
        std::vector<std::shared_ptr<Hook>>& hooks = before ? before_ : after_;
        const auto found = std::find_if(hooks.begin(), hooks.end(),
                                        [f](const std::shared_ptr<Hook>& hook) { return hook->number == f; });
        if (found == hooks.end()) return;
        (*found)->listed = false;
        hooks.erase(found);
    }

    void poll(int quarters) override {
        const std::vector<std::shared_ptr<Handler>> watched(table_, table_ + Handlers);
        if (std::any_of(watched.begin(), watched.end(),
                        [](const std::shared_ptr<Handler>& h) { return h != nullptr; })) {
            callHooks(before_, "before ");
            const std::vector<std::shared_ptr<Handler>> present(table_, table_ + Handlers);
            std::vector<bool> ready(Handlers, false);
            const bool failed =  // a descriptor that is watched was closed
                std::any_of(watched.begin(), watched.end(),
                            [](const std::shared_ptr<Handler>& h) { return h && h->destroyed; });
            for (int h = 0; h < Handlers; ++h)
                ready[static_cast<unsigned>(h)] = !failed && watched[static_cast<unsigned>(h)] && bytes_[h] > 0;
            alarm(quarters);
            for (int h = 0; h < Handlers; ++h) {
                const std::shared_ptr<Handler>& handler = present[static_cast<unsigned>(h)];
                if (!ready[static_cast<unsigned>(h)] || !handler || table_[h] != handler) continue;
                --bytes_[h];
                happen("read " + std::to_string(h));
            }
            callHooks(after_, "after ");
        }
        distribute();
    }

    bool empty() const override {
        const auto none = [](const std::shared_ptr<void>& place) { return !place; };
        return std::all_of(std::begin(objects_), std::end(objects_), none) &&
               std::all_of(std::begin(timers_), std::end(timers_), none) &&
               std::all_of(std::begin(handlers_), std::end(handlers_), none);
    }

private:
    struct Message;

    /** An input, or a converter in front of one. */
    struct Target {
        Type type = Void;
        bool latestOnly = false;
        std::uint64_t number = 0;
        std::shared_ptr<Target> downstream;  // a converter has one
        std::shared_ptr<Message> pending;
    };

    struct Message {
        std::shared_ptr<Target> target;
        Value value;
        bool queued;
    };

    struct Connection {
        std::shared_ptr<Target> entry;
        std::shared_ptr<Target> end;
        bool listed;
    };

    struct Output {
        Type type;
        std::vector<std::shared_ptr<Connection>> connections;
    };

    struct Property {
        int value;
        int holders;
    };

    struct Object {
        std::map<int, std::shared_ptr<Target>> inputs;
        std::map<int, std::shared_ptr<Output>> outputs;
        std::map<int, std::shared_ptr<Property>> properties;
    };

    struct Timer {
        int place = 0;
        bool repeating = false;
        bool active = false;
        bool destroyed = false;
        int interval = 0;
        long due = 0;
        long firedAt = -1;
        std::uint64_t firedIn = 0;
        std::shared_ptr<Output> output;
    };

    struct Handler {
        bool destroyed = false;
    };

    struct Hook {
        int number;
        bool listed;
    };

    void react(std::uint64_t count) override { reactTo(*this, seed_, count); }

    std::shared_ptr<Output> newOutput(Type type) {
        std::shared_ptr<Output> output = std::make_shared<Output>();
        output->type = type;
        outputs_.push_back(output);
        return output;
    }

    std::shared_ptr<Output> outputOf(int o, int name) {
        if (!objects_[o]) return nullptr;
        const auto found = objects_[o]->outputs.find(name);
        return found == objects_[o]->outputs.end() ? nullptr : found->second;
    }

    std::shared_ptr<Target> inputOf(int o, int name) {
        if (!objects_[o]) return nullptr;
        const auto found = objects_[o]->inputs.find(name);
        return found == objects_[o]->inputs.end() ? nullptr : found->second;
    }

    void join(Output& output, const std::shared_ptr<Target>& input) {
        if (!connects(output.type, input->type)) return;
        for (const std::shared_ptr<Connection>& connection : output.connections) {
            if (connection->end == input) return;
        }
        std::shared_ptr<Target> entry = input;
        if (input->type != output.type && input->type != Void) {
            entry = std::make_shared<Target>();
            entry->type = output.type;
            entry->latestOnly = input->latestOnly;
            entry->downstream = input;
        }
        output.connections.push_back(std::make_shared<Connection>(Connection{entry, input, true}));
    }

    void part(Output& output, const std::shared_ptr<Target>& input) {
        for (std::size_t i = 0; i < output.connections.size(); ++i) {
            if (output.connections[i]->end != input) continue;
            output.connections[i]->listed = false;
            output.connections.erase(output.connections.begin() + static_cast<std::ptrdiff_t>(i));
            return;
        }
    }

    void endAll(const std::shared_ptr<Output>& output) {
        if (!output) return;
        for (const std::shared_ptr<Connection>& connection : output->connections) connection->listed = false;
        output->connections.clear();
        outputs_.erase(std::find(outputs_.begin(), outputs_.end(), output));
    }

    void flush(const std::shared_ptr<Target>& input) {
        for (auto each = queue_.begin(); each != queue_.end();) {
            each = (*each)->target == input ? (unqueue(*each), queue_.erase(each)) : each + 1;
        }
        input->pending = nullptr;
    }

    static void unqueue(const std::shared_ptr<Message>& message) { message->queued = false; }

    void retire(const std::shared_ptr<Target>& input) {
        flush(input);
        for (const std::shared_ptr<Output>& output : outputs_) part(*output, input);
    }

    void post(Output& output, const Value& value, int mode) {
        const std::vector<std::shared_ptr<Connection>> connections = output.connections;
        for (const std::shared_ptr<Connection>& connection : connections) {
            if (!connection->listed) continue;
            const std::shared_ptr<Target> entry = connection->entry;
            if (entry->latestOnly && entry->pending) {
                const std::shared_ptr<Message> old = std::move(entry->pending);
                entry->pending = nullptr;
                if (old->queued) queue_.erase(std::find(queue_.begin(), queue_.end(), old));
                old->queued = false;
            }
            if (mode == 1) {
                deliver(entry, value);
                continue;
            }
            const std::shared_ptr<Message> message = std::make_shared<Message>(Message{entry, value, true});
            if (mode == 2) {
                queue_.push_front(message);
            } else {
                queue_.push_back(message);
            }
            if (entry->latestOnly) entry->pending = message;
        }
    }

    void deliver(std::shared_ptr<Target> target, Value value) {
        while (target->downstream) {
            value = converted(value, target->downstream->type);
            target = target->downstream;
        }
        happen("input " + std::to_string(target->number) + ' ' + shown(value, target->type));
    }

    void put(const std::shared_ptr<Object>& object, int tag, std::shared_ptr<Property> property) {
        ++property->holders;
        std::shared_ptr<Property> old = std::move(object->properties[tag]);
        object->properties[tag] = property;
        if (old) letGo(*old);
    }

    void letGo(Property& property) {
        if (--property.holders == 0) happen("release " + std::to_string(property.value));
    }

    /** The inputs' tag is the lowest one, then comes that of the outputs. */
    void releaseAll(Object& object) {
        for (;;) {
            if (!object.inputs.empty()) {
                std::map<int, std::shared_ptr<Target>> inputs;
                inputs.swap(object.inputs);
                for (const auto& each : inputs) retire(each.second);
            } else if (!object.outputs.empty()) {
                std::map<int, std::shared_ptr<Output>> outputs;
                outputs.swap(object.outputs);
                for (const auto& each : outputs) endAll(each.second);
            } else if (!object.properties.empty()) {
                const std::shared_ptr<Property> property = object.properties.begin()->second;
                object.properties.erase(object.properties.begin());
                letGo(*property);
            } else {
                return;
            }
        }
    }

    /** Among timers due at the same moment the one that is armed last comes last. */
    void arm(const std::shared_ptr<Timer>& timer) {
        timer->due = now_ + timer->interval;
        timer->active = true;
        const auto place = std::find_if(active_.begin(), active_.end(),
                                        [&](const std::shared_ptr<Timer>& other) { return other->due > timer->due; });
        active_.insert(place, timer);
    }

    void stop(const std::shared_ptr<Timer>& timer) {
        if (!timer->active) return;
        timer->active = false;
        active_.erase(std::remove(active_.begin(), active_.end(), timer), active_.end());
        waiting_.erase(std::remove(waiting_.begin(), waiting_.end(), timer), waiting_.end());
    }

    void fire(const std::shared_ptr<Timer>& timer) {
        post(*timer->output, valueFor(Void, 0), 0);
        happen("tick " + std::to_string(timer->place));
    }

    void callHooks(const std::vector<std::shared_ptr<Hook>>& hooks, const char* when) {
        const std::vector<std::shared_ptr<Hook>> listed = hooks;
        for (const std::shared_ptr<Hook>& hook : listed) {
            if (hook->listed) happen(when + std::to_string(hook->number));
        }
    }

    const std::uint64_t seed_;
    std::uint64_t inputsMade_ = 0;
    std::shared_ptr<Object> objects_[Objects];
    std::vector<std::shared_ptr<Output>> outputs_;
    std::deque<std::shared_ptr<Message>> queue_;
    long now_ = 0;  // quarters of a second
    std::uint64_t pass_ = 1;
    std::shared_ptr<Timer> ticking_;
    std::shared_ptr<Timer> timers_[Timers];
    std::vector<std::shared_ptr<Timer>> active_;
    std::vector<std::shared_ptr<Timer>> waiting_;
    std::shared_ptr<Handler> handlers_[Handlers];
    std::shared_ptr<Handler> table_[Handlers];
    int bytes_[Handlers] = {};
    std::vector<std::shared_ptr<Hook>> before_;
    std::vector<std::shared_ptr<Hook>> after_;
};

}  // namespace soak

#endif
