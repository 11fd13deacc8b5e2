// Cycles of the event loop with ready descriptors beside a bare `select` loop that does the same: read a byte from each
// ready pipe and put one back. Figures are seconds per cycle.
#include <benchmark/benchmark.h>
#include <sys/select.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "Exec.h"
#include "OrderedGlobal.h"

namespace {

/** Takes the byte that makes a pipe ready and puts one back. */
void turn(int readEnd, int writeEnd) {
    char byte;
    if (read(readEnd, &byte, 1) != 1 || write(writeEnd, &byte, 1) != 1) std::abort();
}

class Turner : public qnSelectHandler {
public:
    Turner(int readEnd, int writeEnd) : qnSelectHandler(readEnd, 1, 0, 0), writeEnd_(writeEnd) {
        qn_theExecutive->addSelectHandler(this);
    }
    ~Turner() override {
        qn_theExecutive->removeSelectHandler(this);
        close(writeEnd_);
    }
    const char* className() const override { return "Turner"; }
    void handleRead() override { turn(descriptor, writeEnd_); }

private:
    int writeEnd_;
};

/** A pipe with one byte in it. */
void makeReadyPipe(int (&ends)[2]) {
    if (pipe(ends) != 0 || write(ends[1], "x", 1) != 1) std::abort();
}

void executiveCycle(benchmark::State& state) {
    qnInitializeToolkit();
    std::vector<std::unique_ptr<Turner>> turners;
    for (long i = 0; i < state.range(0); ++i) {
        int ends[2];
        makeReadyPipe(ends);
        turners.emplace_back(new Turner(ends[0], ends[1]));
    }
    for (auto _ : state) qn_theExecutive->poll(1.0f);
}
BENCHMARK(executiveCycle)->Arg(1)->Arg(8)->Arg(32);

void bareSelectLoop(benchmark::State& state) {
    struct Pipe {
        int ends[2];
    };
    std::vector<Pipe> pipes(static_cast<std::size_t>(state.range(0)));
    fd_set watched;
    FD_ZERO(&watched);
    int limit = 0;
    int writeEnds[FD_SETSIZE];
    for (Pipe& each : pipes) {
        makeReadyPipe(each.ends);
        FD_SET(each.ends[0], &watched);
        writeEnds[each.ends[0]] = each.ends[1];
        if (each.ends[0] >= limit) limit = each.ends[0] + 1;
    }
    for (auto _ : state) {
        fd_set ready = watched;
        timeval wait = {1, 0};
        if (select(limit, &ready, nullptr, nullptr, &wait) <= 0) std::abort();
        for (int d = 0; d < limit; ++d) {
            if (FD_ISSET(d, &ready)) turn(d, writeEnds[d]);
        }
    }
    for (Pipe& each : pipes) {
        close(each.ends[0]);
        close(each.ends[1]);
    }
}
BENCHMARK(bareSelectLoop)->Arg(1)->Arg(8)->Arg(32);

}  // namespace
