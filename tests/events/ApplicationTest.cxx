#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "Application.h"
#include "LoopRig.h"

namespace ApplicationTest {

using LoopRig::App;
using LoopRig::log;
using LoopRig::note;

#ifdef __i386__
static_assert(sizeof(qnApplication) == sizeof(qnObj) + 4, "the open flag and its padding");
#endif
static_assert(std::is_abstract<qnApplication>::value, "an application says its name and how it starts");

struct Application : LoopRig::Test {
    Application() : a(new App("a")), b(new App("b")), c(new App("c")) {}
    void TearDown() override {
        for (std::unique_ptr<App>* app : {&a, &b, &c}) {
            if (*app == nullptr) continue;
            (*app)->onClose = nullptr;
            if (qn_theExecutive->contains(app->get())) (*app)->close();
            app->reset();
        }
        LoopRig::Test::TearDown();
    }
    static qnBool listed(const qnApplication* app) { return qn_theExecutive->contains(app); }
    std::unique_ptr<App> a, b, c;
};

TEST_F(Application, IsListedAndNotOpenWhenItIsMade) {
    EXPECT_FALSE(a->isOpen());
    EXPECT_TRUE(listed(a.get()));
    EXPECT_EQ(3u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, OpenSetsTheFlag) {
    a->open();
    EXPECT_EQ(1, a->isOpen());
    EXPECT_TRUE(listed(a.get()));
}

TEST_F(Application, CloseUnlistsAndClearsTheFlag) {
    a->open();
    a->close();
    EXPECT_EQ(0, a->isOpen());
    EXPECT_FALSE(listed(a.get()));
    EXPECT_TRUE(listed(b.get()));
}

TEST_F(Application, OneThatWasNeverOpenedMayBeClosed) {
    a->close();
    EXPECT_FALSE(a->isOpen());
    EXPECT_FALSE(listed(a.get()));
    a.reset();
}

TEST_F(Application, ClosingTwiceIsHarmless) {
    a->open();
    a->close();
    a->close();
    EXPECT_FALSE(listed(a.get()));
    EXPECT_EQ(2u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, OpeningTwiceIsHarmless) {
    a->open();
    a->open();
    EXPECT_TRUE(a->isOpen());
    a->close();
    EXPECT_FALSE(listed(a.get())) << "it is listed once";
}

TEST_F(Application, OpeningAClosedOneDoesNotListItAgain) {
    a->close();
    a->open();
    EXPECT_TRUE(a->isOpen());
    EXPECT_FALSE(listed(a.get()));
}

TEST_F(Application, DestroyingAnOpenOneClosesIt) {
    a->open();
    const qnApplication* was = a.get();
    a.reset();
    EXPECT_FALSE(listed(was));
    EXPECT_EQ(2u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, DestroyingAnOpenOneThatIsListedTwiceLeavesNoneThatIsCalled) {
    const qnApplication* was = a.get();
    qn_theExecutive->add(a.get());
    a->open();
    a.reset();
    log.clear();
    qn_theExecutive->initialize(0, nullptr);
    qn_theExecutive->open();
    qn_theExecutive->close();
    EXPECT_EQ("b.initialize(0) c.initialize(0) b.open c.open b.close c.close ", log);
    EXPECT_TRUE(listed(was)) << "closing takes one entry out";
    qn_theExecutive->remove(const_cast<qnApplication*>(was));
    EXPECT_FALSE(listed(was));
}

TEST_F(Application, DestroyingOneThatAnotherExecutiveListsLeavesNoneThatIsCalled) {
    qnExec other;
    other.add(a.get());
    a->close();
    a.reset();
    log.clear();
    other.initialize(0, nullptr);
    other.open();
    other.close();
    EXPECT_EQ("", log);
    EXPECT_EQ(1u, other.getNumberOfApplications());
}

TEST_F(Application, DestroyingAnOpenOneCallsTheBasesClose) {
    a->open();
    log.clear();
    a.reset();
    EXPECT_EQ("", log) << "the subclass is gone by then";
}

TEST_F(Application, DestroyingOneThatWasOpenedAfterClosingIsHarmless) {
    a->close();
    a->open();
    a.reset();
    EXPECT_EQ(2u, qn_theExecutive->getNumberOfApplications());
}

// Applications that do things to each other while the executive goes through its list.

TEST_F(Application, OneMadeDuringInitializeIsNotInitialized) {
    std::unique_ptr<App> late;
    a->onInitialize = [&] { late.reset(new App("late")); };
    qn_theExecutive->initialize(0, nullptr);
    EXPECT_EQ("a.initialize(0) b.initialize(0) c.initialize(0) ", log);
    EXPECT_TRUE(listed(late.get()));
    late->close();
}

TEST_F(Application, OneMadeDuringOpenIsNotOpened) {
    std::unique_ptr<App> late;
    b->onOpen = [&] { late.reset(new App("late")); };
    qn_theExecutive->open();
    EXPECT_EQ("a.open b.open c.open ", log);
    EXPECT_FALSE(late->isOpen());
    late->close();
}

TEST_F(Application, OneMadeAndOpenedDuringCloseStays) {
    std::unique_ptr<App> late;
    qn_theExecutive->open();
    b->onClose = [&] {
        late.reset(new App("late"));
        late->open();
    };
    log.clear();
    qn_theExecutive->close();
    EXPECT_EQ("a.close b.close late.open c.close ", log);
    EXPECT_TRUE(listed(late.get()));
    EXPECT_TRUE(late->isOpen());
    late->close();
}

TEST_F(Application, DestroyedDuringInitializeByItself) {
    a->onInitialize = [&] {
        a->close();
        a.reset();
    };
    qn_theExecutive->initialize(0, nullptr);
    EXPECT_EQ("a.initialize(0) a.close b.initialize(0) c.initialize(0) ", log);
}

TEST_F(Application, DestroyedDuringInitializeByOneBeforeIt) {
    a->onInitialize = [&] {
        b->close();
        b.reset();
    };
    qn_theExecutive->initialize(0, nullptr);
    EXPECT_EQ("a.initialize(0) b.close c.initialize(0) ", log);
}

TEST_F(Application, DestroyedDuringInitializeByOneBehindIt) {
    b->onInitialize = [&] {
        a->close();
        a.reset();
    };
    qn_theExecutive->initialize(0, nullptr);
    EXPECT_EQ("a.initialize(0) b.initialize(0) a.close c.initialize(0) ", log);
}

TEST_F(Application, DestroyedDuringOpenByItself) {
    a->onOpen = [&] { a.reset(); };
    qn_theExecutive->open();
    EXPECT_EQ("a.open b.open c.open ", log);
    EXPECT_EQ(2u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, DestroyedDuringOpenByAnother) {
    b->open();
    log.clear();
    a->onOpen = [&] { b.reset(); };
    c->onOpen = [&] { a.reset(); };
    qn_theExecutive->open();
    EXPECT_EQ("a.open c.open ", log);
    EXPECT_EQ(1u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, ClosedDuringOpenIsNotOpened) {
    a->onOpen = [&] { b->close(); };
    qn_theExecutive->open();
    EXPECT_EQ("a.open b.close c.open ", log);
    EXPECT_FALSE(b->isOpen());
}

TEST_F(Application, DestroyedDuringCloseByItself) {
    qn_theExecutive->open();
    log.clear();
    a->onClose = [&] { a.reset(); };
    qn_theExecutive->close();
    EXPECT_EQ("a.close b.close c.close ", log);
    EXPECT_EQ(0u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, DestroyedDuringCloseByOneBeforeIt) {
    qn_theExecutive->open();
    log.clear();
    a->onClose = [&] {
        b.reset();
        c.reset();
    };
    qn_theExecutive->close();
    EXPECT_EQ("a.close ", log);
    EXPECT_EQ(0u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, ClosedDuringCloseIsNotClosedAgain) {
    qn_theExecutive->open();
    log.clear();
    a->onClose = [&] { c->close(); };
    qn_theExecutive->close();
    EXPECT_EQ("a.close c.close b.close ", log);
}

TEST_F(Application, ClosingAllDuringCloseClosesEachOnce) {
    qn_theExecutive->open();
    log.clear();
    a->onClose = [] { qn_theExecutive->close(); };
    qn_theExecutive->close();
    EXPECT_EQ("a.close b.close c.close ", log);
}

TEST_F(Application, OneThatRefusesToCloseStays) {
    struct Stubborn : qnApplication {
        const char* className() const override { return "Stubborn"; }
        void initialize(int, char**) override {}
        void close() override { note("refused"); }
        ~Stubborn() override {}
    } stubborn;
    qn_theExecutive->open();
    log.clear();
    qn_theExecutive->close();
    EXPECT_EQ("a.close b.close c.close refused ", log);
    EXPECT_TRUE(listed(&stubborn));
    EXPECT_TRUE(stubborn.isOpen());
}

TEST_F(Application, AnotherAtTheAddressOfADestroyedOneIsNotMistakenForIt) {
    alignas(App) static unsigned char place[sizeof(App)];
    App* first = new (place) App("first");
    App* second = nullptr;
    first->onInitialize = nullptr;
    c->onInitialize = [&] {
        first->close();
        first->~App();
        second = new (place) App("second");
    };
    qn_theExecutive->initialize(0, nullptr);
    EXPECT_EQ("a.initialize(0) b.initialize(0) c.initialize(0) first.close ", log) << "the new one came too late";
    second->close();
    second->~App();
}

#ifndef MORVAQNDS_CHECKED

TEST_F(Application, DestroyedWithoutEverBeingOpenedItStaysListedAndIsNotCalled) {
    qnApplication* was = a.get();
    a.reset();
    EXPECT_TRUE(listed(was));
    EXPECT_EQ(3u, qn_theExecutive->getNumberOfApplications());
    qn_theExecutive->initialize(0, nullptr);
    qn_theExecutive->open();
    qn_theExecutive->close();
    EXPECT_EQ("b.initialize(0) c.initialize(0) b.open c.open b.close c.close ", log);
    EXPECT_EQ(1u, qn_theExecutive->getNumberOfApplications());
    qn_theExecutive->remove(was);
    EXPECT_EQ(0u, qn_theExecutive->getNumberOfApplications());
}

TEST_F(Application, DestroyedDuringInitializeWithoutEverBeingOpenedItIsNotCalled) {
    qnApplication* was = b.get();
    a->onInitialize = [&] { b.reset(); };
    c->onInitialize = [&] { c.reset(); };
    qnApplication* alsoWas = c.get();
    qn_theExecutive->initialize(0, nullptr);
    EXPECT_EQ("a.initialize(0) c.initialize(0) ", log);
    qn_theExecutive->remove(was);
    qn_theExecutive->remove(alsoWas);
}

TEST_F(Application, DestroyedWithoutEverBeingOpenedItKeepsTheLoopRunning) {
    qnApplication* was = a.get();
    a.reset();
    b->close();
    c->close();
    log.clear();
    LoopRig::Note::post("1", [&] { LoopRig::Note::post("2", [&] { qn_theExecutive->remove(was); }); });
    qn_theExecutive->loop();
    EXPECT_EQ("1 2 ", log);
}

#endif

}  // namespace ApplicationTest
