#ifndef MORVAQNDS_CONVERTER_H
#define MORVAQNDS_CONVERTER_H

#include "Export.h"
#include "InputChannel.h"

/**
 * A converter has the shape of an input channel: its function turns a value into another type, and its closure is the
 * input that gets the result. Between an output and an input of another type a connection puts one of its own.
 *
 *     // void (void* input, V value): `input` is the qnInputChannel to deliver to
 *     static void metresToText(void* input, Metres value) { ... qnDeliver<char*>(input, text); }
 *     new qnConverter(myMetres, qnDT_CharPtr, reinterpret_cast<qnDeliverFunc>(&metresToText));
 *
 * A registered converter is a prototype: it stays registered for the life of the process. Deliberate: the newest one of
 * a pair of types counts, and only for connections made from then on, so that a program can improve on a conversion.
 */
class MORVAQNDS_API qnConverter : public qnInputChannel {
public:
    /** Registers a conversion. Must live as long as the process. */
    qnConverter(unsigned short from, unsigned short to, qnDeliverFunc fn);
    /** Lets go of the input that it was spliced to; a prototype leaves the registry. */
    ~qnConverter();

    /**
     * A new converter for one connection, owned by nobody yet; null when no conversion from `from` to `to` is
     * registered.
     */
    static qnConverter* findConverter(unsigned short from, unsigned short to);

    /** Puts this converter in front of `input`, holds it and takes over its `latestOnly`. */
    void splice(qnInputChannel* input);

    /** The type that the conversion produces. */
    unsigned short getTargetType() const { return targetType_; }

    /** Registers the eighteen standard conversions. Part of `qnInitializeToolkit`. */
    static void createStandardConverters();

private:
    struct Instance {};
    qnConverter(const qnConverter& prototype, Instance);

    unsigned short targetType_;
    qnConverter* next_;
};

/**
 * Calls the function of `input`, a `qnInputChannel*`, with its closure and `value`: how a conversion ends. Requires:
 * `Value` is the form in which the target type is delivered, `int` for `qnDT_qnBool` and `char*` for `qnDT_CharPtr`.
 */
template <class Value>
inline void qnDeliver(void* input, Value value) {
    qnInputChannel* channel = static_cast<qnInputChannel*>(input);
    reinterpret_cast<void (*)(void*, Value)>(channel->deliverFunc)(channel->closure, static_cast<Value&&>(value));
}

#endif
