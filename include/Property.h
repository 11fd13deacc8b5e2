#ifndef MORVAQNDS_PROPERTY_H
#define MORVAQNDS_PROPERTY_H

#include "Data.h"
#include "Export.h"
#include "Types.h"

class qnObj;
class qnStr;

/**
 * A value under a tag, for any `qnObj` to carry. A tag is a number that stands for a name throughout the process.
 *
 *     unsigned short tag = qnProperty::findTag("width");
 *     if (tag == qnProperty::NoTag) tag = qnProperty::allocNewTag("width");
 *     object->setProperty(new qnProperty(tag, 640L));
 *     long width = object->findProperty("width", nullptr)->getAsLong();
 *
 * A property is of one of eight kinds, fixed by its constructor: there is none for an int or a float. The getters and
 * setters are each for one kind and do not convert. Requires: they are used on their own kind only. A getter of another
 * kind gives meaningless bits; in a checked build, where they would be a pointer, null or an empty string.
 *
 * Objects hold a property by its count, so one property may be set on several objects.
 *
 * Requires: the toolkit is initialised before a property is made, for that assigns the codes by which it knows its
 * kind.
 */
class MORVAQNDS_API qnProperty {
public:
    /** Releases the pointer that it is given. */
    typedef void (*Release)(void* pointer);

    /** The answer "no tag". */
    enum : unsigned short { NoTag = 65535 };

    qnProperty(unsigned short tag, qnBool value);
    qnProperty(unsigned short tag, long value);
    qnProperty(unsigned short tag, double value);
    /** Keeps the pointer itself. If `owned`, the text comes from `malloc` or `strdup` and is freed with the property.
     */
    qnProperty(unsigned short tag, const char* text, qnBool owned);
    /** Keeps a copy. */
    qnProperty(unsigned short tag, const qnStr& value);
    /** Keeps the pointer; `release` may be null, otherwise it is called with the pointer, a null one too. */
    qnProperty(unsigned short tag, void* pointer, Release release);
    /** Holds the object, which may be null. */
    qnProperty(unsigned short tag, qnObj* object);
    /** Holds the box, which may be null. */
    qnProperty(unsigned short tag, qnData* box);
    /** Does what `cleanup` does. */
    virtual ~qnProperty();

    unsigned short getTag() const { return tag_; }
    /** The data type code of the kind; for a property that holds a box, that of the box, if there is one. */
    unsigned short getType() const;

    qnBool getAsBool() const;
    long getAsLong() const;
    double getAsDouble() const;
    const char* getAsCharPtr() const;
    const qnStr& getAsStr() const;
    void* getAsVoidPtr() const;
    qnObj* getAsObjPtr() const;
    qnData* getAsData() const;

    void setAsBool(qnBool value);
    void setAsLong(long value);
    void setAsDouble(double value);
    /** Frees the current text if it was owned. */
    void setAsCharPtr(const char* text, qnBool owned);
    void setAsStr(const qnStr& value);
    /** Calls the current release function on the current pointer first. */
    void setAsVoidPtr(void* pointer, Release release);
    void setAsObjPtr(qnObj* object);
    void setAsData(qnData* box);

    /** Releases what the property owns or holds; afterwards it owns nothing. */
    void cleanup();

    /** The lowest tag of `name`, or `NoTag`. Linear in the number of names. */
    static unsigned short findTag(const char* name);
    /**
     * A new tag for `name`. Deliberate: it does not look whether the name has one; ask `findTag` first.
     * More than 65,534 tags end the process.
     */
    static unsigned short allocNewTag(const char* name);
    /** Makes the table of names, if there is none. Part of `qnInitializeToolkit`. */
    static void constructPropertyNames();
    /** Forgets all names. Tags that were handed out are not handed out again. */
    static void destroyPropertyNames();

    unsigned refCount;  ///< objects that hold this property

private:
    qnProperty(const qnProperty&);
    qnProperty& operator=(const qnProperty&);

    struct Text {
        const char* text;
        qnBool owned;
    };
    struct Pointer {
        void* pointer;
        Release release;
    };
    union Value {
        qnBool boolean;
        long integer;
        double real;
        Text text;
        qnStr* string;
        Pointer pointer;
        qnObj* object;
        qnData* box;
    };

    qnProperty(unsigned short tag, unsigned short type);
    void requireKind(unsigned short type, const char* operation) const;
    bool mayPoint(unsigned short type) const;

    unsigned short tag_;
    unsigned short type_;
    Value value_;
};

#endif
