// Sends over channels beside the least that could do the same by hand: a box on the heap and a call through a pointer
// for each receiver. Figures are seconds per send; the rows with several inputs show what each further one costs.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "EventHandler.h"
#include "Obj.h"
#include "OrderedGlobal.h"

namespace {

void receive(int* sum, int value) { *sum += value; }

void receiveRaw(void* sum, int value) { *static_cast<int*>(sum) += value; }

/** An object with one int output, connected to `count` inputs. */
class Wiring {
public:
    explicit Wiring(int count) {
        qnInitializeToolkit();
        output = sender.addOutput("out", qnDT_int);
        for (int i = 0; i < count; ++i) {
            const std::string name = "in" + std::to_string(i);
            receiver.addInput<&receive>(name.c_str(), &sum);
            sender.connect("out", &receiver, name.c_str());
        }
    }

    qnObj sender;
    qnObj receiver;
    qnOutputChannel* output;
    int sum = 0;
};

void mallocAndFree(benchmark::State& state) {
    for (auto _ : state) {
        void* block = std::malloc(sizeof(qnIntData));
        benchmark::DoNotOptimize(block);
        std::free(block);
    }
}
BENCHMARK(mallocAndFree);

void sendImmediate(benchmark::State& state) {
    Wiring wiring(static_cast<int>(state.range(0)));
    for (auto _ : state) wiring.sender.sendInt(wiring.output, 1, qnObj::qnSF_Immediate);
    benchmark::DoNotOptimize(wiring.sum);
}
BENCHMARK(sendImmediate)->Arg(1)->Arg(2)->Arg(4)->Arg(8)->Arg(16)->Arg(64);

void handWrittenImmediate(benchmark::State& state) {
    struct Receiver {
        void (*function)(void*, int);
        void* closure;
    };
    int sum = 0;
    std::vector<Receiver> receivers(static_cast<std::size_t>(state.range(0)), Receiver{receiveRaw, &sum});
    for (auto _ : state) {
        int* box = new int(1);
        benchmark::DoNotOptimize(box);
        for (const Receiver& receiver : receivers) receiver.function(receiver.closure, *box);
        delete box;
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(handWrittenImmediate)->Arg(1)->Arg(2)->Arg(4)->Arg(8)->Arg(16)->Arg(64);

void sendQueued(benchmark::State& state) {
    Wiring wiring(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        wiring.sender.sendInt(wiring.output, 1, qnObj::qnSF_Queued);
        qn_theEventHandler->distributeEvents();
    }
    benchmark::DoNotOptimize(wiring.sum);
}
BENCHMARK(sendQueued)->Arg(1)->Arg(4)->Arg(16);

void handWrittenQueued(benchmark::State& state) {
    struct Message {
        void (*function)(void*, int);
        void* closure;
        std::shared_ptr<int> box;
    };
    int sum = 0;
    std::deque<std::unique_ptr<Message>> queue;
    for (auto _ : state) {
        std::shared_ptr<int> box = std::make_shared<int>(1);
        for (long i = 0; i < state.range(0); ++i) {
            queue.push_back(std::unique_ptr<Message>(new Message{receiveRaw, &sum, box}));
        }
        while (!queue.empty()) {
            const std::unique_ptr<Message> message = std::move(queue.front());
            queue.pop_front();
            message->function(message->closure, *message->box);
        }
    }
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(handWrittenQueued)->Arg(1)->Arg(4)->Arg(16);

void sendThroughConverter(benchmark::State& state) {
    qnInitializeToolkit();
    qnObj sender, receiver;
    float sum = 0;
    qnOutputChannel* output = sender.addOutput("out", qnDT_int);
    const auto add = +[](float* s, float value) { *s += value; };
    receiver.addInput("in", &sum, add);
    sender.connect("out", &receiver, "in");
    for (auto _ : state) sender.sendInt(output, 1, qnObj::qnSF_Immediate);
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(sendThroughConverter);

}  // namespace
