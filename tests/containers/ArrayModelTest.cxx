// Long runs of random operations on an array of ints and one of strings, next to a model of the same rules: a vector
// and a capacity. Copies with capacity that is recorded only, own elements and the array itself take part.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "NumberArrays.h"
#include "StrArray.h"
#include "support/RandomRun.h"

namespace ArrayModelTest {

template <class ArrayClass>
struct Traits;
template <>
struct Traits<qnIntArray> {
    typedef int Value;
    static int make(unsigned n) { return static_cast<int>(n); }
    static bool same(int a, int b) { return a == b; }
    static Value fresh(int current) { return current; }  // new ints are whatever the memory held
};
template <>
struct Traits<qnStrArray> {
    typedef std::string Value;
    static qnStr make(unsigned n) { return n == 0 ? qnStr() : qnStr(static_cast<int>(n)); }
    static bool same(const qnStr& a, const std::string& b) { return a == b.c_str(); }
    static Value fresh(const qnStr&) { return std::string(); }
};

Traits<qnIntArray>::Value valueOf(int element) { return element; }
Traits<qnStrArray>::Value valueOf(const qnStr& element) { return element.text(); }

template <class ArrayClass>
class Beside {
public:
    typedef typename ArrayClass::ElementType Element;
    typedef Traits<ArrayClass> T;
    typedef typename T::Value Value;

    explicit Beside(unsigned long seed) : random_(static_cast<std::mt19937::result_type>(seed)) {}

    void step() {
        unsigned length = static_cast<unsigned>(model_.size());
        unsigned at = pick(length + 1), from = length == 0 ? 0 : pick(length);
        unsigned count = pick(length - at + 1);
        Element value = T::make(pick(6));
        switch (pick(17)) {
            case 0:
                array_.append(&value);
                appended(valueOf(value));
                break;
            case 1:
                if (length == 0) break;
                array_.append(&array_.elements()[from]);
                appended(Value(model_[from]));
                break;
            case 2: {
                ArrayClass other = array_.extract(at, count);
                array_.append(other);
                spliced(length, std::vector<Value>(model_.begin() + at, model_.begin() + at + count));
                break;
            }
            case 3:
                array_.append(array_);
                spliced(length, std::vector<Value>(model_));
                break;
            case 4:
                array_.insert(&value, at);
                inserted(at, valueOf(value));
                break;
            case 5: {
                if (length == 0) break;
                array_.insert(&array_.elements()[from], at);
                // What stands at that place when the tail has moved.
                inserted(at, Value(from > at ? model_[from - 1] : model_[from]));
                break;
            }
            case 6:
                array_.insert(array_, at);
                spliced(at, std::vector<Value>(model_));
                break;
            case 7: {
                ArrayClass other(array_);
                array_.insert(other, at);
                spliced(at, std::vector<Value>(model_));
                break;
            }
            case 8:
                array_.remove(at, count);
                model_.erase(model_.begin() + at, model_.begin() + at + count);
                break;
            case 9: {
                ArrayClass cut = array_.cut(at, count);
                std::vector<Value> taken(model_.begin() + at, model_.begin() + at + count);
                model_.erase(model_.begin() + at, model_.begin() + at + count);
                array_.append(cut);
                spliced(static_cast<unsigned>(model_.size()), taken);
                break;
            }
            case 10: {
                unsigned newLength = pick(20);
                array_.resize(newLength);
                if (newLength < length) model_.resize(newLength);
                for (unsigned i = length; i < newLength; ++i) model_.push_back(T::fresh(array_.elements()[i]));
                capacity_ = newLength;
                break;
            }
            case 11: {
                unsigned room = pick(40);
                array_.setMaxLength(room);
                capacity_ = std::max(room, length);
                break;
            }
            case 12:
                if (length == 0) break;
                array_.swap(from, length - 1);
                std::swap(model_[from], model_[length - 1]);
                break;
            case 13: {
                ArrayClass copy(array_);
                array_ = copy;  // from now on the capacity is recorded only
                break;
            }
            case 14:
                array_ = array_.tail(count);
                model_.erase(model_.begin(), model_.end() - count);
                capacity_ = count;
                break;
            case 15:
                array_.expand();
                capacity_ += 4;
                break;
            default: {
                unsigned expected = 0xFFFFFFFFu;
                for (unsigned i = length; i > at; --i) {
                    if (T::same(value, model_[i - 1])) expected = i - 1;
                }
                ASSERT_EQ(expected, array_.find(&value, at));
            }
        }
        if (array_.length() > 60) {
            array_.remove(0, array_.length() - 10);
            model_.erase(model_.begin(), model_.end() - 10);
        }
    }

    void check() {
        ASSERT_EQ(model_.size(), array_.length());
        ASSERT_EQ(capacity_ * sizeof(Element), array_.maxBytes);
        for (unsigned i = 0; i < array_.length(); ++i) ASSERT_TRUE(T::same(array_.elements()[i], model_[i])) << i;
    }

private:
    unsigned pick(unsigned n) { return static_cast<unsigned>(random_()) % n; }

    // The four growth rules.
    void appended(const Value& value) {
        if (model_.size() == capacity_) capacity_ += 4;
        model_.push_back(value);
    }
    void inserted(unsigned at, const Value& value) {
        if (model_.size() == capacity_) ++capacity_;
        model_.insert(model_.begin() + at, value);
    }
    void spliced(unsigned at, const std::vector<Value>& values) {
        capacity_ = std::max(capacity_, static_cast<unsigned>(model_.size() + values.size()));
        model_.insert(model_.begin() + at, values.begin(), values.end());
    }

    std::mt19937 random_;
    ArrayClass array_;
    std::vector<Value> model_;
    unsigned capacity_ = 0;
};

template <class ArrayClass>
void agreesWithTheModel() {
    const RandomRun run(40);
    for (unsigned long round = 0; round < run.rounds; ++round) {
        Beside<ArrayClass> random(run.seed + round);
        for (unsigned step = 0; step < 500; ++step) {
            random.step();
            random.check();
            ASSERT_FALSE(testing::Test::HasFatalFailure()) << "round " << round << ", step " << step;
        }
    }
}

TEST(ArrayModel, IntsAgreeWithTheModel) { agreesWithTheModel<qnIntArray>(); }

TEST(ArrayModel, StringsAgreeWithTheModel) { agreesWithTheModel<qnStrArray>(); }

}  // namespace ArrayModelTest
