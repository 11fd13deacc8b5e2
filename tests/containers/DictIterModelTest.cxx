// Random steps on one dictionary with several iterators, against a naive model.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "Dictionary.h"
#include "support/ProbeDictionary.h"
#include "support/RandomRun.h"

namespace DictIterModelTest {

/** All entries in the order of iteration, and for each iterator where it stands. */
class Model {
public:
    struct Iter {
        int key;  // where it stands
        bool advanced, finished;
    };

    explicit Model(unsigned nbuckets) : chains_(nbuckets) {}

    void add(int key, int value) {
        for (auto& entry : chainOf(key)) {
            if (entry.first == key) {
                entry.second = value;
                return;
            }
        }
        chainOf(key).insert(chainOf(key).begin(), {key, value});
    }
    void remove(int key) {
        std::vector<int> order = keys();
        auto place = std::find(order.begin(), order.end(), key);
        if (place == order.end()) return;
        for (Iter& it : iters) {
            if (it.finished || it.key != key) continue;
            it.finished = place + 1 == order.end();
            it.advanced = true;
            if (!it.finished) it.key = place[1];
        }
        auto& chain = chainOf(key);
        chain.erase(std::find_if(chain.begin(), chain.end(), [key](auto& entry) { return entry.first == key; }));
    }
    void start(unsigned index) {
        std::vector<int> order = keys();
        iters[index] = Iter{order.empty() ? 0 : order[0], false, order.empty()};
    }
    void advance(unsigned index) {
        Iter& it = iters[index];
        if (it.finished) return;
        if (it.advanced) {
            it.advanced = false;
            return;
        }
        std::vector<int> order = keys();
        auto next = std::find(order.begin(), order.end(), it.key) + 1;
        it.finished = next == order.end();
        if (!it.finished) it.key = *next;
    }
    std::string standing(unsigned index) {
        const Iter& it = iters[index];
        if (it.finished) return "finished";
        if (it.advanced) return "advanced";
        return std::to_string(it.key) + "=" + std::to_string(*value(it.key));
    }
    int* value(int key) {
        for (auto& entry : chainOf(key)) {
            if (entry.first == key) return &entry.second;
        }
        return nullptr;
    }
    std::vector<int> keys() const {
        std::vector<int> order;
        for (const auto& chain : chains_) {
            for (const auto& entry : chain) order.push_back(entry.first);
        }
        return order;
    }

    std::vector<Iter> iters;

private:
    std::vector<std::pair<int, int>>& chainOf(int key) { return chains_[unsigned(key) % chains_.size()]; }

    std::vector<std::vector<std::pair<int, int>>> chains_;
};

/** A few thousand random steps on one dictionary and on the model. False after the first difference. */
bool agreesWithModel(std::mt19937& random) {
    constexpr unsigned Iterators = 6;
    auto below = [&random](unsigned n) { return static_cast<unsigned>(random() % n); };
    unsigned nbuckets = 1 + below(9), keys = 1 + below(24);
    ProbeDictionary d(nbuckets);
    Model model(nbuckets);
    std::vector<std::unique_ptr<qnDictIter>> iters;
    model.iters.resize(Iterators);
    for (unsigned i = 0; i < Iterators; ++i) {
        iters.push_back(std::make_unique<qnDictIter>(d));
        model.start(i);
    }
    for (unsigned step = 0; step < 2000; ++step) {
        int key = static_cast<int>(below(keys));
        unsigned which = below(Iterators);
        switch (below(10)) {
            case 0:
            case 1:
                d.add(key, static_cast<int>(step));
                model.add(key, static_cast<int>(step));
                break;
            case 2:
                d.removeKey(key);
                model.remove(key);
                break;
            case 3:
                std::free(d.cut(&key));
                model.remove(key);
                break;
            case 4:  // the entry under an iterator, by its own key
                if (void* own = iters[which]->getKey()) {
                    int copy = ProbeDictionary::at(own);
                    d.remove(own);
                    model.remove(copy);
                }
                break;
            case 5:
                if (model.iters[which].finished || below(8) == 0) {
                    if (below(2) == 0)
                        iters[which] = std::make_unique<qnDictIter>(d);
                    else
                        *iters[which] = d;
                    model.start(which);
                }
                break;
            default: ++*iters[which]; model.advance(which);
        }
        unsigned attached = 0;
        for (unsigned i = 0; i < Iterators; ++i) {
            EXPECT_EQ(standing(*iters[i]), model.standing(i)) << "iterator " << i << ", step " << step;
            if (testing::Test::HasFailure()) return false;
            if (!model.iters[i].finished) ++attached;
        }
        EXPECT_EQ(d.iters.length(), attached) << step;
        EXPECT_EQ(d.count, model.keys().size()) << step;
        int* value = model.value(key);
        EXPECT_EQ(d.has(key), value != nullptr) << step;
        if (value != nullptr && d.has(key)) {
            EXPECT_EQ(d.value(key), *value) << step;
        }
        d.calls();
        if (testing::Test::HasFailure()) return false;
    }
    return true;
}

/** Iterators walk while entries go: each sees no entry twice, and every entry that stays. */
bool seesEachEntryOnce(std::mt19937& random) {
    auto below = [&random](unsigned n) { return static_cast<unsigned>(random() % n); };
    unsigned nbuckets = 1 + below(9), keys = below(40);
    ProbeDictionary d(nbuckets);
    for (unsigned key = 0; key < keys; ++key) d.add(static_cast<int>(key), 0);
    std::set<int> removed;
    struct Walk {
        std::unique_ptr<qnDictIter> it;
        std::vector<int> seen;
    };
    std::vector<Walk> walks(1 + below(5));
    for (Walk& walk : walks) walk.it = std::make_unique<qnDictIter>(d);
    for (bool busy = true; busy;) {
        busy = false;
        for (Walk& walk : walks) {
            if (walk.it->dict == nullptr) continue;
            busy = true;
            if (void* key = walk.it->getKey()) {
                int seen = ProbeDictionary::at(key);
                EXPECT_EQ(removed.count(seen), 0u) << "a removed key is seen";
                walk.seen.push_back(seen);
                if (below(3) == 0) {
                    removed.insert(seen);
                    d.remove(key);
                }
            }
            int victim = static_cast<int>(below(keys + 1));
            if (below(4) == 0 && d.has(victim)) {
                removed.insert(victim);
                d.removeKey(victim);
            }
            ++*walk.it;
        }
        d.calls();
    }
    for (Walk& walk : walks) {
        std::set<int> once(walk.seen.begin(), walk.seen.end());
        EXPECT_EQ(once.size(), walk.seen.size()) << "an entry is seen twice";
        for (unsigned key = 0; key < keys; ++key) {
            if (removed.count(static_cast<int>(key)) != 0) continue;
            EXPECT_EQ(once.count(static_cast<int>(key)), 1u) << key << " is skipped";
        }
    }
    return !testing::Test::HasFailure();
}

TEST(DictIterModel, SeveralIteratorsStandWhereTheModelSaysAfterRandomSteps) {
    RandomRun run(40);
    std::mt19937 random = run.generator();
    for (unsigned long round = 0; round < run.rounds; ++round) {
        if (!agreesWithModel(random)) break;
    }
}

TEST(DictIterModel, RemovalDuringIterationSkipsNothingAndShowsNothingTwice) {
    RandomRun run(1000);
    std::mt19937 random = run.generator();
    for (unsigned long round = 0; round < run.rounds; ++round) {
        if (!seesEachEntryOnce(random)) break;
    }
}

}  // namespace DictIterModelTest
