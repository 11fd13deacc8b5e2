// Where the described fields of the objects stand, on the machine for which they are described. Fields that other code
// may not touch are looked at through their accessors.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "Application.h"
#include "Converter.h"
#include "Event.h"
#include "Exec.h"
#include "MessageEvent.h"
#include "OrderedGlobal.h"
#include "Property.h"
#include "SelectHandler.h"
#include "Timer.h"

#ifdef __i386__

namespace FieldOrderTest {

struct FieldOrder : testing::Test {
    static void SetUpTestSuite() { qnInitializeToolkit(); }

    template <class Field>
    static Field at(const void* object, std::size_t offset) {
        Field field;
        std::memcpy(&field, static_cast<const char*>(object) + offset, sizeof field);
        return field;
    }
};

void ignoreInt(void*, int) {}

TEST_F(FieldOrder, OfABox) {
    qnIntData box(7);
    box.refCount = 3;
    EXPECT_EQ(3u, at<unsigned>(&box, 4));
    EXPECT_EQ(qnDT_int, at<unsigned short>(&box, 8));
    EXPECT_EQ(7, at<int>(&box, 12)) << "the value follows the base";
}

TEST_F(FieldOrder, OfAConverter) {
    const unsigned short from = static_cast<unsigned short>((*qn_nextDataType)());
    const qnDeliverFunc fn = reinterpret_cast<qnDeliverFunc>(&ignoreInt);
    static qnConverter* const older = new qnConverter(from, 300, fn);
    static qnConverter* const newer = new qnConverter(from, 301, fn);
    EXPECT_EQ(300, at<unsigned short>(older, sizeof(qnInputChannel)));
    EXPECT_EQ(301, at<unsigned short>(newer, sizeof(qnInputChannel)));
    EXPECT_EQ(older, at<qnConverter*>(newer, sizeof(qnInputChannel) + 4)) << "the one registered before";
    qnConverter* instance = qnConverter::findConverter(from, 300);
    EXPECT_EQ(nullptr, at<qnConverter*>(instance, sizeof(qnInputChannel) + 4)) << "not in the registry";
    delete instance;
}

TEST_F(FieldOrder, OfAProperty) {
    qnProperty number(0x1234, 7L);
    number.refCount = 3;
    EXPECT_EQ(3u, at<unsigned>(&number, 4));
    EXPECT_EQ(0x1234, at<unsigned short>(&number, 8));
    EXPECT_EQ(qnDT_long, at<unsigned short>(&number, 10));
    EXPECT_EQ(7, at<long>(&number, 12));
    number.refCount = 0;
    char text[] = "text";
    qnProperty ofText(1, text, 0);
    EXPECT_EQ(text, at<char*>(&ofText, 12));
    ofText.setAsCharPtr(text, 5);
    EXPECT_EQ(5, at<unsigned char>(&ofText, 16)) << "the flag follows the text";
    ofText.setAsCharPtr(text, 0);  // not the property's to free
}

TEST_F(FieldOrder, OfAnObjectIsItsPropertyListAfterTheRoot) {
    qnObj object;
    EXPECT_EQ(nullptr, at<void*>(&object, sizeof(qnXDRObj)));
    qnProperty* property = new qnProperty(1, 7L);
    object.setProperty(property);
    const qnVoidPtrArray* list = at<qnVoidPtrArray*>(&object, sizeof(qnXDRObj));
    ASSERT_NE(nullptr, list);
    EXPECT_EQ(property, list->elements()[0]);
}

TEST_F(FieldOrder, OfAnEvent) {
    struct Plain : qnEvent {
        using qnEvent::qnEvent;
        void deliver() override {}
    } event(77);
    EXPECT_EQ(static_cast<void*>(&event.next), reinterpret_cast<char*>(&event) + sizeof(qnObj));
    EXPECT_EQ(static_cast<void*>(&event.prev), reinterpret_cast<char*>(&event) + sizeof(qnObj) + 4);
    EXPECT_EQ(77u, at<unsigned long>(&event, sizeof(qnObj) + 8));
    EXPECT_EQ(event.getSequenceNumber(), at<unsigned long>(&event, sizeof(qnObj) + 12));
}

TEST_F(FieldOrder, OfAMessage) {
    qnInputChannel in(qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&ignoreInt), 0);
    qnRetain(&in);
    qnMessageEvent message(&in, new qnIntData(1));
    EXPECT_EQ(&in, at<qnInputChannel*>(&message, sizeof(qnEvent)));
    EXPECT_EQ(message.getData(), at<qnData*>(&message, sizeof(qnEvent) + 4));
}

TEST_F(FieldOrder, OfATimer) {
    qnTimer first(0), second(1);
    first.setInterval(2);
    second.setInterval(5);
    first.startTimer();
    second.startTimer();
    EXPECT_EQ(5.0f, at<float>(&second, sizeof(qnObj)));
    EXPECT_EQ(3.0f, at<float>(&second, sizeof(qnObj) + 4));
    EXPECT_EQ(1, at<unsigned char>(&first, sizeof(qnObj) + 8));
    EXPECT_EQ(0, at<unsigned char>(&first, sizeof(qnObj) + 9)) << "not repeating";
    EXPECT_EQ(1, at<unsigned char>(&second, sizeof(qnObj) + 9)) << "repeating";
    EXPECT_EQ(first.getTickOutput(), at<qnOutputChannel*>(&first, sizeof(qnObj) + 12));
    EXPECT_EQ(&second, at<qnTimer*>(&first, sizeof(qnObj) + 16));
    first.stopTimer();
    EXPECT_EQ(0, at<unsigned char>(&first, sizeof(qnObj) + 8));
    second.stopTimer();
}

TEST_F(FieldOrder, OfAnApplication) {
    struct Program : qnApplication {
        const char* className() const override { return "Program"; }
        void initialize(int, char**) override {}
    } program;
    EXPECT_EQ(0, at<unsigned char>(&program, sizeof(qnObj)));
    program.open();
    EXPECT_EQ(1, at<unsigned char>(&program, sizeof(qnObj)));
    program.close();
}

void before() {}
void after() {}

TEST_F(FieldOrder, OfTheExecutive) {
    struct Idle : qnSelectHandler {
        using qnSelectHandler::qnSelectHandler;
        const char* className() const override { return "Idle"; }
        void handleRead() override {}
    } handler(2, 1, 0, 1);
    qnExec exec;
    EXPECT_EQ(0, at<unsigned char>(&exec, 4)) << "not dirty";
    exec.addSelectHandler(&handler);
    EXPECT_EQ(101, at<unsigned short>(&exec, 0));
    EXPECT_EQ(1, at<unsigned char>(&exec, 4)) << "dirty";
    exec.updateSelectState();
    EXPECT_EQ(2, at<unsigned short>(&exec, 0));
    EXPECT_EQ(3, at<unsigned short>(&exec, 2));
    EXPECT_EQ(0, at<unsigned char>(&exec, 4));
    EXPECT_EQ(1, at<unsigned char>(&exec, 5));
    EXPECT_EQ(0, at<unsigned char>(&exec, 6));
    EXPECT_EQ(1, at<unsigned char>(&exec, 7));
    fd_set sets[3];
    std::memcpy(sets, reinterpret_cast<const char*>(&exec) + 8, sizeof sets);
    EXPECT_TRUE(FD_ISSET(2, &sets[0]));
    EXPECT_FALSE(FD_ISSET(2, &sets[1]));
    EXPECT_TRUE(FD_ISSET(2, &sets[2]));
    const std::size_t table = 8 + sizeof sets;
    EXPECT_EQ(&handler, at<qnSelectHandler*>(&exec, table + 2 * 4));
    exec.removeSelectHandler(&handler);
    handler.descriptor = -1;  // not its to close

    exec.addPreSelectFunc(before);
    exec.addPostSelectFunc(after);
    const char* lists = reinterpret_cast<const char*>(&exec) + table + 100 * 4;
    EXPECT_EQ(before, reinterpret_cast<const qnStubFuncArray*>(lists)->elements()[0]);
    EXPECT_EQ(after, reinterpret_cast<const qnStubFuncArray*>(lists + sizeof(qnStubFuncArray))->elements()[0]);
    const qnVoidPtrArray* applications = reinterpret_cast<const qnVoidPtrArray*>(lists + 2 * sizeof(qnStubFuncArray));
    EXPECT_EQ(0u, applications->length());
    qnApplication* const some = reinterpret_cast<qnApplication*>(&handler);  // only an address to the list
    exec.add(some);
    EXPECT_EQ(some, applications->elements()[0]);
    exec.remove(some);
}

}  // namespace FieldOrderTest

#endif
