// The life of the table of property names: before the start, its end, and a new start.
#include <morvaqnds.h>

#include <cstdio>

static int failures = 0;

static void expect(bool condition, const char* what) {
    if (condition) return;
    std::fprintf(stderr, "%s\n", what);
    failures = 1;
}

static void ignore(void*, int) {}

int main() {
    expect(qnProperty::findTag("width") == 65535, "without a table there is a tag");

    qnInitializeToolkit();
    expect(qnProperty::findTag("width") == 65535, "the empty table has a tag");
    expect(qnProperty::allocNewTag("width") == 0, "the first tag is not 0");
    expect(qnProperty::allocNewTag("height") == 1, "the second tag is not 1");
    expect(qnProperty::findTag("height") == 1, "height is not found");

    qnObj object;
    object.setProperty(new qnProperty(1, 480L));
    object.addInput("in", qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&ignore), 0);
    object.addOutput("out", qnDT_int);
    object.connect("out", &object, "in");

    qnProperty::destroyPropertyNames();
    expect(qnProperty::findTag("width") == 65535, "width is found in no table");
    expect(object.findProperty("height", nullptr) == nullptr, "a property is found by a name that has gone");
    expect(object.findProperty(static_cast<unsigned short>(1), nullptr) != nullptr, "a property went with its name");
    expect(object.findInput("in") == nullptr, "an input is found without the name of its property");
    qnProperty::destroyPropertyNames();

    qnProperty::constructPropertyNames();
    expect(qnProperty::findTag("width") == 65535, "a new table has old names");
    expect(qnProperty::findTag("") == 65535, "a new table has empty names");
    const unsigned short depth = qnProperty::allocNewTag("depth");
    expect(depth == 4, "a tag was handed out twice");  // after two of the program and those of inputs and outputs
    expect(qnProperty::findTag("depth") == depth, "depth is not found");
    expect(qnProperty::findTag("") == 65535, "tags without a name have the empty one");
    expect(qnProperty::allocNewTag("width") == 5, "the next tag is not the next number");
    expect(qnProperty::findTag("width") == 5, "width is not found under its new tag");

    // The old channels stay with the object, out of reach, until it goes; new ones come beside them.
    object.addInput("in", qnDT_int, nullptr, reinterpret_cast<qnDeliverFunc>(&ignore), 0);
    expect(object.findInput("in") != nullptr, "an input is not found");
    expect(object.findInput("in")->getNumberOfOutputs() == 0, "the new input is the old one");

    qnProperty::destroyPropertyNames();
    expect(qnProperty::allocNewTag("weight") == 7, "no tag without a table");
    expect(qnProperty::findTag("weight") == 7, "weight is not found");
    return failures;
}
