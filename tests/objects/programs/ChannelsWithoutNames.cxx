// An object's channels when the table of property names goes: they cannot be found by name, but they live, go on
// receiving, and end with the object. Under a new table the object starts over with new dictionaries.
#include <morvaqnds.h>

#include <cstdio>
#include <string>

namespace {

std::string steps;

void receiveFirst(void*, int value) { steps += "first:" + std::to_string(value) + " "; }
void receiveSecond(void*, int value) { steps += "second:" + std::to_string(value) + " "; }

int failures;
void expect(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%s\n", what);
    ++failures;
}

}  // namespace

int main() {
    qnInitializeToolkit();
    qnOutputChannel out(qnDT_int);
    qnObj* object = new qnObj;
    qnInputChannel* first =
        object->addInput("in", qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&receiveFirst), 0);
    object->addOutput("out", qnDT_int);
    out.add(first);
    const unsigned short tag = qnProperty::findTag("inputs");

    qnProperty::destroyPropertyNames();
    expect(object->findInput("in") == nullptr, "found an input without names");
    object->connect("out", object, "in");
    object->removeInput("in");
    object->removeOutput("out");
    expect(first->refCount == 2, "something was done without names");
    object->sendInt(&out, 1, qnObj::qnSF_Immediate);

    qnProperty::constructPropertyNames();
    expect(object->findInput("in") == nullptr, "found an input under new names");
    qnInputChannel* second =
        object->addInput("in", qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&receiveSecond), 0);
    expect(qnProperty::findTag("inputs") != tag, "a tag was handed out twice");
    expect(object->findInput("in") == second, "did not find the new input");
    expect(object->getNumberOfProperties() == 3, "not three properties");
    qnObj sender;
    qnOutputChannel* own = sender.addOutput("out", qnDT_int);
    sender.connect("out", object, "in");
    sender.sendInt(own, 2, qnObj::qnSF_Queued);
    sender.sendInt(&out, 3, qnObj::qnSF_Immediate);
    qn_theEventHandler->distributeEvents();

    delete object;
    expect(out.getNumberOfConnections() == 0, "the old input outlived its object");
    expect(own->getNumberOfConnections() == 0, "the new input outlived its object");
    expect(steps == "first:1 first:3 second:2 ", steps.c_str());
    return failures == 0 ? 0 : 1;
}
