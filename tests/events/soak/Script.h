#ifndef MORVAQNDS_SOAK_SCRIPT_H
#define MORVAQNDS_SOAK_SCRIPT_H

#include "World.h"

namespace soak {

/** The generator known as SplitMix64 (Steele, Lea and Flood, "Fast splittable pseudorandom number generators", 2014).
 */
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    /** A number from 0 to limit - 1. */
    int below(int limit) { return static_cast<int>(next() % static_cast<unsigned>(limit)); }

private:
    std::uint64_t state_;
};

/** Carries out one operation, which the seed decides. What waits or lets time pass is not done inside a reaction. */
inline void operate(World& world, std::uint64_t seed) {
    Random random(seed);
    const int a = random.below(Objects), b = random.below(Objects);
    const int x = random.below(Names), y = random.below(Names);
    const Type type = static_cast<Type>(random.below(TypeCount));
    const int value = random.below(400);
    const int t = random.below(Timers), h = random.below(Handlers), f = random.below(Functions);
    const int tag = random.below(Tags), quarters = random.below(12);
    const bool flag = random.below(2) != 0;
    const bool inside = world.depth() > 0;

    switch (random.below(100)) {
        default: {  // the rest: sends
            const int mode = random.below(3);
            if (mode == 1 || world.queued() < MaxQueue) world.send(a, x, value, mode);
            break;
        }
        case 0:
        case 1:
        case 2: world.makeObject(a); break;
        case 3:
            if (value % 8 == 0) world.destroyObject(a);
            break;
        case 4:
        case 5:
        case 6:
        case 7:
        case 8:
            if (value % 3 == 0) world.addInput(a, x, type, flag);
            break;
        case 9:
        case 10:
        case 11:
        case 12:
            if (value % 3 == 0) world.addOutput(a, x, type);
            break;
        case 13: world.removeInput(a, x); break;
        case 14: world.removeOutput(a, x); break;
        case 15: world.flushInput(a, x); break;
        case 16:
        case 17:
        case 18:
        case 19:
        case 20:
        case 21:
        case 22:
        case 23:
        case 24:
        case 25:
        case 26:
        case 27:
        case 28:
        case 29: world.connect(a, x, b, y); break;
        case 30:
        case 31:
        case 32:
        case 33: world.disconnect(a, x, b, y); break;
        case 34:
        case 35:
        case 36:
        case 37: world.distribute(); break;
        case 38:
        case 39:
        case 40:
        case 41: world.setProperty(a, tag, value); break;
        case 42: world.shareProperty(a, tag, b); break;
        case 43: world.removeProperty(a, tag); break;
        case 44:
            if (value % 32 == 0) world.removeAllProperties(a);
            break;
        case 45:
        case 46: world.makeTimer(t, flag, quarters); break;
        case 47: world.destroyTimer(t); break;
        case 48:
        case 49:
        case 50:
        case 51: world.startTimer(t, quarters); break;
        case 52: world.stopTimer(t); break;
        case 53:
        case 54: world.connectTimer(t, a, x); break;
        case 55:
        case 56:
        case 57:
        case 58:
            if (!inside) world.alarm(quarters);
            break;
        case 59:
        case 60:
            if (!inside) world.makeHandler(h);
            break;
        case 61: world.destroyHandler(h); break;
        case 62:
        case 63:
        case 64: world.addHandler(h); break;
        case 65: world.removeHandler(h); break;
        case 66:
        case 67:
        case 68: world.writePipe(h); break;
        case 69: world.addFunction(f, flag); break;
        case 70: world.removeFunction(f, flag); break;
        case 71:
        case 72:
        case 73:
        case 74:
        case 75:
            if (!inside) world.poll(quarters);
            break;
    }
}

/** Two things in five that happen lead to another operation. */
inline void reactTo(World& world, std::uint64_t seed, std::uint64_t count) {
    Random random(seed ^ (count * 0xD1342543DE82EF95u));
    if (random.below(5) < 2) operate(world, random.next());
}

}  // namespace soak

#endif
