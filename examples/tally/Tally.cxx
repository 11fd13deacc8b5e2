#include "Tally.h"

#include <algorithm>
#include <cerrno>

#include "Descriptors.h"

Tally::Tally(WordCounts& counts, const Settings& settings)
    : settings_(settings), counter_(counts, settings.only), display_(counts, settings.top), timer_(settings.every) {
    addInput("ended", this, &onEnded);
    addInput("signal", this, &onSignal);
    addInput("failed", this, &onFailed);
    timer_.connect("tick", &display_, "show");
    display_.connect("failed", this, "failed");
    signals_.connect("signal", this, "signal");
}

const char* Tally::className() const { return "Tally"; }

void Tally::initialize(int, char**) {
    if (signals_.descriptor < 0) {
        fail(descriptors::unreadable("signals"));
    } else if (!descriptors::isWaitable(signals_.descriptor)) {
        fail(descriptors::unwaitable("signals", signals_.descriptor));
    }
    for (unsigned i = 0; i < settings_.inputs.length() && problem_.length() == 0; ++i) {
        add(settings_.inputs.elements()[i].text());
    }
}

void Tally::open() {
    qnApplication::open();
    signals_.start();
    if (settings_.every > 0) timer_.start();
    for (std::unique_ptr<Input>& input : inputs_) input->reader.start();
    openNextFile();
}

void Tally::close() {
    for (std::unique_ptr<Input>& input : inputs_) input->reader.finish();
    timer_.stopTimer();
    signals_.stop();
    qnApplication::close();
}

/** Opens an input that has to be waited for or followed, and notes a file for later: there may be any number. */
void Tally::add(const char* name) {
    struct stat status;
    if (!descriptors::look(name, status)) {
        fail(descriptors::unreadable(name));
    } else if (S_ISREG(status.st_mode) && !settings_.follow) {
        qnStr file(name);
        files_.append(&file);
    } else if (S_ISREG(status.st_mode) || !reads(status)) {
        // Two readers of one pipe would each get parts of its lines, so it is read once.
        openInput(name, status);
    }
}

bool Tally::reads(const struct stat& status) const {
    return std::any_of(inputs_.begin(), inputs_.end(),
                       [&](const std::unique_ptr<Input>& input) { return input->is(status); });
}

void Tally::openInput(const char* name, const struct stat& status) {
    qnStr problem;
    std::unique_ptr<Input> input = Input::open(name, status, settings_.follow, problem);
    if (input == nullptr) {
        fail(problem);
        return;
    }
    input->splitter.connect("word", &counter_, "word");  // from qnStr to CharPtr
    input->reader.connect("block", &timer_, "check");
    input->reader.connect("end", this, "ended");
    input->reader.connect("failed", this, "failed");  // from CharPtr to qnStr
    if (isOpen()) input->reader.start();
    inputs_.push_back(std::move(input));
}

void Tally::openNextFile() {
    if (nextFile_ == files_.length()) return;
    const char* name = files_.elements()[nextFile_++].text();
    struct stat status;
    if (descriptors::look(name, status)) {
        openInput(name, status);
    } else {
        fail(descriptors::unreadable(name));
    }
}

void Tally::onEnded(Tally* tally) {
    if (!tally->isOpen()) return;
    // Whose splitter is at its end has nothing on its way any more.
    std::vector<std::unique_ptr<Input>>& inputs = tally->inputs_;
    bool fileEnded = false;
    inputs.erase(std::remove_if(inputs.begin(), inputs.end(),
                                [&](const std::unique_ptr<Input>& input) {
                                    if (!input->splitter.hasEnded()) return false;
                                    fileEnded = fileEnded || input->isFile();
                                    return true;
                                }),
                 inputs.end());
    if (fileEnded) tally->openNextFile();
    if (inputs.empty() && !tally->settings_.follow) tally->close();
}

void Tally::onSignal(Tally* tally, int) {
    tally->interrupted_ = true;
    tally->close();
}

void Tally::onFailed(Tally* tally, const qnStr& problem) {
    if (tally->isOpen()) tally->fail(problem);
}

/** The first failure counts. */
void Tally::fail(const qnStr& problem) {
    if (problem_.length() == 0) problem_ = problem;
    if (isOpen()) close();
}
