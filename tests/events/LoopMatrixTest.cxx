// Everything that a program may do, done inside everything that the library calls.
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <string>
#include <tuple>

#include "LoopRig.h"
#include "Property.h"

namespace LoopMatrixTest {

using LoopRig::App;
using LoopRig::Note;
using LoopRig::Source;
using LoopRig::Timer;

/** An object with inputs that counts what it receives. */
struct Peer : qnObj {
    static void onInt(Peer* self, int value) {
        if (value == 99) ++received;
        LoopRig::act(self->onValue);
    }
    static void onOther(Peer*, int) {}
    std::function<void()> onValue;
    static int received;  // the value 99, by anybody
};
int Peer::received = 0;

/** One of everything, connected and running. */
struct World {
    World();
    ~World();
    /** The sender's output; null when it is gone. */
    qnOutputChannel* out() const { return sender == nullptr ? nullptr : sender->findOutput("out"); }
    void act() {
        if (acted++ == 0) action(*this);
    }
    static void cycle() { qn_theExecutive->poll(0); }

    std::unique_ptr<Peer> sender{new Peer}, receiver{new Peer};
    std::unique_ptr<Timer> ticking{new Timer("ticking", 1)}, far{new Timer("far", 0)}, idle{new Timer("idle", 0)};
    Source reader{"reader"}, second{"second"}, spare{"spare"};
    std::unique_ptr<App> app{new App("app")};
    void (*action)(World&) = nullptr;
    int acted = 0;
    bool seen = false;  // what the action itself found

    static World* current;  // for plain functions
};
World* World::current = nullptr;

std::function<void()> preHook, postHook;
int funcsCalled;
void pre() {
    ++funcsCalled;
    LoopRig::act(preHook);
}
void post() {
    ++funcsCalled;
    LoopRig::act(postHook);
}

World::World() {
    current = this;
    Peer::received = 0;
    preHook = postHook = nullptr;
    sender->addOutput("out", qnDT_int);
    sender->addOutput("converted", qnDT_double);
    receiver->addInput("in", receiver.get(), &Peer::onInt);
    receiver->addInput("other", receiver.get(), &Peer::onOther);
    sender->connect("out", receiver.get(), "in");
    sender->connect("converted", receiver.get(), "in");
    ticking->start(0);
    far->start(3600);
    reader.ready();
    second.ready();
    qn_theExecutive->removeSelectHandler(spare.handler);
    app->open();
    qn_theExecutive->addPreSelectFunc(pre);
    qn_theExecutive->addPreSelectFunc(pre);
    qn_theExecutive->addPostSelectFunc(post);
    qn_theExecutive->addPostSelectFunc(post);
}

World::~World() {
    for (int i = 0; i < 2; ++i) {
        qn_theExecutive->removePreSelectFunc(pre);
        qn_theExecutive->removePostSelectFunc(post);
    }
    preHook = postHook = nullptr;
    qn_theEventHandler->removeEvents([](qnEvent*, void*) -> qnBool { return 1; }, nullptr);
}

/** Where the library calls the program: prepares that the next cycle acts there. */
struct Place {
    const char* name;
    void (*prepare)(World&);
};

void release(void*) { World::current->act(); }

const Place places[] = {
    {"PreSelectFunction", [](World& w) { preHook = [&w] { w.act(); }; }},
    {"Tick", [](World& w) { w.ticking->onTick = [&w] { w.act(); }; }},
    {"TickInsideATick",
     [](World& w) {
         w.idle->start(1);
         w.ticking->onTick = [&w] {
             if (w.ticking != nullptr) w.ticking->onTick = nullptr;
             qnTimer::alarm(1);
         };
         w.idle->onTick = [&w] { w.act(); };
     }},
    {"Handler", [](World& w) { w.reader.handler->onRead = [&w] { w.act(); }; }},
    {"LastHandler", [](World& w) { w.second.handler->onRead = [&w] { w.act(); }; }},
    {"PostSelectFunction", [](World& w) { postHook = [&w] { w.act(); }; }},
    {"EventDelivery", [](World& w) { Note::post("event", [&w] { w.act(); }); }},
    {"QueuedDelivery",
     [](World& w) {
         w.receiver->onValue = [&w] { w.act(); };
         w.sender->sendInt(w.out(), 1, qnObj::qnSF_Queued);
     }},
    {"UrgentDelivery",
     [](World& w) {
         w.receiver->onValue = [&w] { w.act(); };
         w.sender->sendInt(w.out(), 1, qnObj::qnSF_Urgent);
     }},
    {"ImmediateDelivery",
     [](World& w) {
         w.receiver->onValue = [&w] { w.act(); };
         Note::post("event", [&w] { w.sender->sendInt(w.out(), 1, qnObj::qnSF_Immediate); });
     }},
    {"ConvertedDelivery",
     [](World& w) {
         w.receiver->onValue = [&w] { w.act(); };
         w.sender->sendDouble(w.sender->findOutput("converted"), 1, qnObj::qnSF_Queued);
     }},
    {"ConvertedImmediateDelivery",
     [](World& w) {
         w.receiver->onValue = [&w] { w.act(); };
         Note::post("event",
                    [&w] { w.sender->sendDouble(w.sender->findOutput("converted"), 1, qnObj::qnSF_Immediate); });
     }},
    {"CloseOfAnApplication",
     [](World& w) {
         w.app->onClose = [&w] { w.act(); };
         Note::post("event", [] { qn_theExecutive->close(); });
     }},
    {"OpenOfAnApplication",
     [](World& w) {
         w.app->onOpen = [&w] { w.act(); };
         Note::post("event", [] { qn_theExecutive->open(); });
     }},
    {"InitializeOfAnApplication",
     [](World& w) {
         w.app->onInitialize = [&w] { w.act(); };
         Note::post("event", [] { qn_theExecutive->initialize(0, nullptr); });
     }},
    {"PropertyRelease",
     [](World& w) {
         unsigned short tag = qnProperty::findTag("released");
         if (tag == qnProperty::NoTag) tag = qnProperty::allocNewTag("released");
         w.receiver->setProperty(new qnProperty(tag, nullptr, release));
         Note::post("event", [&w, tag] { w.receiver->removeProperty(tag); });
     }},
    {"PredicateOfRemoveEvents",
     [](World& w) {
         Note::post("removed");
         preHook = [&w] {
             qn_theEventHandler->removeEvents(
                 [](qnEvent*, void* world) -> qnBool {
                     World& self = *static_cast<World*>(world);
                     const bool first = self.acted == 0;
                     self.act();
                     return first;
                 },
                 &w);
         };
     }},
};

/** Something that a program does, and whether it has come about after some cycles. */
struct Deed {
    const char* name;
    void (*act)(World&);
    bool (*holds)(World&);
};

bool receivedOnce(World&) { return Peer::received == 1; }

const Deed deeds[] = {
    {"SendQueued", [](World& w) { w.sender->sendInt(w.out(), 99, qnObj::qnSF_Queued); }, nullptr},
    {"SendUrgent", [](World& w) { w.sender->sendInt(w.out(), 99, qnObj::qnSF_Urgent); }, nullptr},
    {"SendImmediate",
     [](World& w) {
         w.sender->sendInt(w.out(), 99, qnObj::qnSF_Immediate);
         w.seen = Peer::received == 1;
     },
     [](World& w) { return w.seen; }},
    {"Connect", [](World& w) { w.sender->connect("out", w.receiver.get(), "other"); },
     [](World& w) { return w.out()->isConnectedTo(w.receiver->findInput("other")) != 0; }},
    {"Disconnect",
     [](World& w) {
         w.sender->disconnect("out", w.receiver.get(), "in");
         w.sender->disconnect("converted", w.receiver.get(), "in");
     },
     [](World& w) { return w.receiver->findInput("in")->getNumberOfOutputs() == 0; }},
    {"RemoveInput", [](World& w) { w.receiver->removeInput("in"); },
     [](World& w) { return w.receiver->findInput("in") == nullptr && w.out()->getNumberOfConnections() == 0; }},
    {"RemoveOutputs",
     [](World& w) {
         w.sender->removeOutput("out");
         w.sender->removeOutput("converted");
     },
     [](World& w) { return w.out() == nullptr && w.receiver->findInput("in")->getNumberOfOutputs() == 0; }},
    {"ReplaceInput", [](World& w) { w.receiver->addInput("in", w.receiver.get(), &Peer::onInt); },
     [](World& w) {
         return w.out()->getNumberOfConnections() == 1 && !w.out()->isConnectedTo(w.receiver->findInput("in"));
     }},
    {"ReplaceOutput", [](World& w) { w.sender->addOutput("out", qnDT_int); },
     [](World& w) { return w.out()->getNumberOfConnections() == 0; }},
    {"FlushInput", [](World& w) { w.receiver->findInput("in")->flush(); },
     [](World& w) { return w.out()->getNumberOfConnections() == 1; }},
    {"DestroyReceiver", [](World& w) { w.receiver.reset(); },
     [](World& w) { return w.out()->getNumberOfConnections() == 0; }},
    {"DestroySender", [](World& w) { w.sender.reset(); },
     [](World& w) { return w.receiver->findInput("in")->getNumberOfOutputs() == 0; }},
    {"DestroyReceiverAndSender",
     [](World& w) {
         w.receiver.reset();
         w.sender.reset();
     },
     [](World&) { return Peer::received == 0; }},
    {"StartTimer", [](World& w) { w.idle->start(3600); }, [](World& w) { return w.idle->isActive() != 0; }},
    {"StopTimer", [](World& w) { w.far->stopTimer(); },
     [](World& w) { return !w.far->isActive() && w.ticking->isActive(); }},
    {"DestroyTimers",
     [](World& w) {
         w.far.reset();
         w.ticking.reset();
         w.idle.reset();
     },
     [](World&) { return qnTimer::getFirst() == nullptr; }},
    {"LetTimePass", [](World&) { qnTimer::alarm(3600); }, [](World& w) { return !w.far->isActive(); }},
    {"AddHandler", [](World& w) { qn_theExecutive->addSelectHandler(w.spare.ready().handler); },
     [](World&) { return LoopRig::log.find("spare.read") != std::string::npos; }},
    {"RemoveHandlers",
     [](World& w) {
         qn_theExecutive->removeSelectHandler(w.reader.handler);
         qn_theExecutive->removeSelectHandler(w.second.handler);
         LoopRig::log.clear();
     },
     [](World&) { return LoopRig::log.find("read") == std::string::npos; }},
    {"DestroyHandlers",
     [](World& w) {
         w.second.drop();
         w.reader.drop();
         LoopRig::log.clear();
     },
     [](World&) { return LoopRig::log.find("read") == std::string::npos; }},
    {"CloseApplications", [](World&) { qn_theExecutive->close(); },
     [](World&) { return qn_theExecutive->getNumberOfApplications() == 0; }},
    {"DestroyApplication", [](World& w) { w.app.reset(); },
     [](World&) { return qn_theExecutive->getNumberOfApplications() == 0; }},
    {"PostEvent", [](World&) { Note::post("posted"); },
     [](World&) { return LoopRig::log.find("posted ") != std::string::npos; }},
    {"RemoveEvents",
     [](World& w) {
         Note::post("posted");
         qn_theEventHandler->removeEvents([](qnEvent*, void*) -> qnBool { return 1; }, nullptr);
         w.seen = qn_theEventHandler->count == 0;
     },
     [](World& w) { return w.seen && LoopRig::log.find("posted ") == std::string::npos; }},
    {"Distribute",
     [](World& w) {
         Note::post("posted");
         qn_theEventHandler->distributeEvents();
         w.seen = LoopRig::log.find("posted ") != std::string::npos;
     },
     [](World& w) { return w.seen; }},
    {"RunACycle",
     [](World& w) {
         Note::post("posted");
         World::cycle();
         w.seen = LoopRig::log.find("posted ") != std::string::npos;
     },
     [](World& w) { return w.seen; }},
    {"RemoveFunctions",
     [](World&) {
         for (int i = 0; i < 2; ++i) {
             qn_theExecutive->removePreSelectFunc(pre);
             qn_theExecutive->removePostSelectFunc(post);
         }
         funcsCalled = 0;
     },
     [](World&) { return funcsCalled == 0; }},
    {"RemoveProperties", [](World& w) { w.receiver->removeAllProperties(); },
     [](World& w) { return w.receiver->getNumberOfProperties() == 0; }},
    {"DestroyEverything",
     [](World& w) {
         w.receiver.reset();
         w.ticking.reset();
         w.reader.drop();
         w.app.reset();
         w.sender.reset();
         w.second.drop();
         w.far.reset();
         w.idle.reset();
     },
     [](World&) { return qnTimer::getFirst() == nullptr && qn_theExecutive->getNumberOfApplications() == 0; }},
};

class Inside : public LoopRig::Test, public testing::WithParamInterface<std::tuple<unsigned, unsigned>> {};

TEST_P(Inside, IsDoneAndTheCycleGoesOn) {
    const Place& place = places[std::get<0>(GetParam())];
    const Deed& deed = deeds[std::get<1>(GetParam())];
    World world;
    world.action = deed.act;
    place.prepare(world);
    for (int i = 0; i < 3; ++i) World::cycle();
    EXPECT_LE(1, world.acted);
    EXPECT_TRUE(deed.holds == nullptr ? receivedOnce(world) : deed.holds(world)) << LoopRig::log;
}

std::string nameOf(const testing::TestParamInfo<std::tuple<unsigned, unsigned>>& test) {
    return std::string(deeds[std::get<1>(test.param)].name) + "InA" + places[std::get<0>(test.param)].name;
}

INSTANTIATE_TEST_SUITE_P(Everything, Inside,
                         testing::Combine(testing::Range(0u, static_cast<unsigned>(std::size(places))),
                                          testing::Range(0u, static_cast<unsigned>(std::size(deeds)))),
                         nameOf);

}  // namespace LoopMatrixTest
