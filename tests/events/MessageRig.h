#ifndef MORVAQNDS_TESTS_MESSAGERIG_H
#define MORVAQNDS_TESTS_MESSAGERIG_H

#include <memory>

#include "support/ChannelRig.h"

/** One output of one object that sends to three inputs of another: the place of tests of reentrancy. */
class MessageRig : public ChannelRig {
protected:
    void SetUp() override {
        ChannelRig::SetUp();
        sender.reset(new qnObj);
        receiver.reset(new qnObj);
        out = sender->addOutput("out", qnDT_int);
        for (Sink* sink : {&a, &b, &c}) join(*sink);
    }
    void join(Sink& sink, qnBool latestOnly = 0) {
        intInput(*receiver, sink.name.c_str(), sink, latestOnly);
        sender->connect("out", receiver.get(), sink.name.c_str());
    }
    void cut(Sink& sink) { sender->disconnect("out", receiver.get(), sink.name.c_str()); }
    void remove(Sink& sink) { receiver->removeInput(sink.name.c_str()); }
    qnInputChannel* in(Sink& sink) { return receiver->findInput(sink.name.c_str()); }
    void send(int value, qnObj::qnSendFlags mode) { sendTo(out, value, mode); }
    /** A reaction that happens the first time only. */
    static std::function<void()> once(std::function<void()> reaction) {
        std::shared_ptr<bool> done(new bool(false));
        return [done, reaction] {
            if (*done) return;
            *done = true;
            reaction();
        };
    }

    Sink a{"a"}, b{"b"}, c{"c"}, d{"d"};
    std::unique_ptr<qnObj> sender, receiver;
    qnOutputChannel* out = nullptr;
};

#endif
