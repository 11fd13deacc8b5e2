// Random steps on sets with iterators alive, against std::set.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "StrSet.h"
#include "support/ProbeSet.h"
#include "support/RandomRun.h"

namespace SetModelTest {

typedef std::set<int> Keys;

/** An iterator, and what it has shown and still has to show. */
struct Walk {
    std::unique_ptr<qnSetIter> it;
    Keys owed;  // were there when it started, are there still, and have not been shown
    Keys seen;  // have been shown and not removed since
    int shown;  // what it stands on, if it answers

    void start(qnSet& set, const Keys& present) {
        if (it == nullptr)
            it = std::make_unique<qnSetIter>(set);
        else
            *it = set;
        owed = present;
        seen.clear();
        look(present);
    }
    void look(const Keys& present) {
        const void* key = it->getKey();
        if (key == nullptr) return;
        shown = ProbeSet::at(key);
        EXPECT_EQ(present.count(shown), 1u) << shown << " is shown, but not there";
        EXPECT_TRUE(seen.insert(shown).second) << shown << " is shown twice";
        owed.erase(shown);
    }
    void advance(const Keys& present) {
        bool walking = it->set != nullptr;
        ++*it;
        look(present);
        if (walking && it->set == nullptr) {
            EXPECT_TRUE(owed.empty()) << "it is finished, but has not shown " << *owed.begin();
        }
    }
    /** Keys have been removed. */
    void forget(const Keys& present) {
        for (Keys* keys : {&owed, &seen}) {
            Keys left;
            std::set_intersection(keys->begin(), keys->end(), present.begin(), present.end(),
                                  std::inserter(left, left.end()));
            keys->swap(left);
        }
        if (it->set == nullptr) {
            EXPECT_TRUE(owed.empty()) << "removal finished it before its time";
        }
    }
};

class SetBesideModel {
public:
    SetBesideModel(std::mt19937& random, unsigned nbuckets, unsigned keys)
        : random_(random), keys_(keys), set_(nbuckets), walks_(5) {
        for (Walk& walk : walks_) walk.start(set_, model_);
    }

    /** False after the first difference. */
    bool step() {
        int key = static_cast<int>(below(keys_));
        Walk& walk = walks_[below(static_cast<unsigned>(walks_.size()))];
        switch (below(24)) {
            case 0:
            case 1:
            case 2:
            case 3:
                set_.put(key);
                model_.insert(key);
                break;
            case 4:
            case 5:
                set_.removeKey(key);
                model_.erase(key);
                break;
            case 6:  // what an iterator stands on, by its own key
            case 7:
                if (const void* own = walk.it->getKey()) {
                    model_.erase(ProbeSet::at(own));
                    set_.remove(own);
                }
                break;
            case 8: combine(&qnSet::operator+=, std::set_union<It, It, Out>); break;
            case 9: combine(&qnSet::operator-=, std::set_difference<It, It, Out>); break;
            case 10: combine(&qnSet::operator*=, std::set_intersection<It, It, Out>); break;
            case 11: set_ += set_.itself(); break;
            case 12: set_ *= set_.itself(); break;
            case 13:
                if (below(8) == 0) {
                    set_ -= set_.itself();
                    model_.clear();
                }
                break;
            case 14:
                if (below(8) == 0) {
                    set_.cleanup();
                    model_.clear();
                }
                break;
            case 15:
                if (walk.it->set == nullptr || below(4) == 0) {
                    if (below(2) == 0) walk.it.reset();
                    walk.start(set_, model_);
                }
                break;
            default: walk.advance(model_);
        }
        for (Walk& each : walks_) each.forget(model_);
        return agrees(key);
    }

private:
    typedef Keys::const_iterator It;
    typedef std::insert_iterator<Keys> Out;

    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }

    void combine(qnSet& (qnSet::*operation)(const qnSet&), Out (*onModel)(It, It, It, It, Out)) {
        ProbeSet other(1 + below(9));
        Keys otherModel, result;
        for (unsigned n = below(keys_ + 1); n > 0; --n) {
            int key = static_cast<int>(below(keys_));
            other.put(key);
            otherModel.insert(key);
        }
        (set_.*operation)(other);
        onModel(model_.begin(), model_.end(), otherModel.begin(), otherModel.end(),
                std::inserter(result, result.end()));
        model_.swap(result);
        EXPECT_EQ(other.count, otherModel.size());
    }

    bool agrees(int key) {
        EXPECT_EQ(set_.count, model_.size());
        EXPECT_EQ(set_.has(key), model_.count(key) == 1);
        Keys stored;
        for (unsigned b = 0; b < set_.buckets.length(); ++b) {
            for (qnSetBucket* link = set_.buckets.elements()[b]; link != nullptr; link = link->next) {
                EXPECT_EQ(unsigned(ProbeSet::at(link->entry)) % set_.buckets.length(), b);
                stored.insert(ProbeSet::at(link->entry));
            }
        }
        EXPECT_EQ(stored, model_);
        long attached = std::count_if(walks_.begin(), walks_.end(), [](Walk& walk) { return walk.it->set != nullptr; });
        EXPECT_EQ(set_.iters.length(), static_cast<unsigned>(attached));
        set_.calls();
        return !testing::Test::HasFailure();
    }

    std::mt19937& random_;
    unsigned keys_;
    ProbeSet set_;
    Keys model_;
    std::vector<Walk> walks_;
};

TEST(SetModel, HoldsWhatTheModelHoldsAndIteratorsShowEachKeyOnceAfterRandomSteps) {
    RandomRun run(60);
    std::mt19937 random = run.generator();
    for (unsigned long round = 0; round < run.rounds; ++round) {
        unsigned nbuckets = 1 + static_cast<unsigned>(random() % 9), keys = 1 + static_cast<unsigned>(random() % 24);
        SetBesideModel beside(random, nbuckets, keys);
        for (int step = 0; step < 2000; ++step) {
            if (!beside.step()) {
                ADD_FAILURE() << "round " << round << ", step " << step;
                return;
            }
        }
    }
}

TEST(SetModel, StringSetHoldsWhatTheModelHolds) {
    RandomRun run(20000);
    std::mt19937 random = run.generator();
    qnStrSet set(13);
    std::set<std::string> model;
    for (unsigned long step = 0; step < run.rounds; ++step) {
        std::string text = "k" + std::to_string(random() % 300);
        qnStr key(text.c_str());
        if (random() % 2 == 0) {
            set.add(&key);
            model.insert(text);
        } else {
            set.remove(&key);
            model.erase(text);
        }
    }
    ASSERT_EQ(set.count, model.size());
    std::set<std::string> visited;
    for (qnStrSetIter it(set); it.set != nullptr; ++it) {
        EXPECT_TRUE(visited.insert(static_cast<const qnStr*>(it.getKey())->text()).second);
    }
    EXPECT_EQ(visited, model);
}

}  // namespace SetModelTest
