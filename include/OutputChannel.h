#ifndef MORVAQNDS_OUTPUTCHANNEL_H
#define MORVAQNDS_OUTPUTCHANNEL_H

#include "Checked.h"
#include "Export.h"
#include "InputChannel.h"
#include "Types.h"
#include "VoidPtrArray.h"

/**
 * Where values leave: a data type and the connections to inputs, served in the order in which they were made.
 *
 *     qnOutputChannel* out = object->addOutput("level", qnDT_int);       // see qnObj
 *     out->add(in);                                                      // with a converter, if the types differ
 *     object->sendInt(out, 7, qnObj::qnSF_Queued);
 *
 * Each connection holds the input, or the converter in front of it. Destroying the output ends its connections.
 */
class MORVAQNDS_API qnOutputChannel {
public:
    explicit qnOutputChannel(unsigned short type) : type_(type), connections_(nullptr) {}
    ~qnOutputChannel();

    unsigned short getType() const { return type_; }

    /**
     * Connects to `input`. If its type is another one, and not `qnDT_void`, a converter is put in between; where there
     * is none the process ends: "Can't convert from %d to %d".
     *
     * Deliberate: a second connection to the same input is made when asked for, and then each value arrives twice;
     * `qnObj::connect` is what refuses it.
     */
    void add(qnInputChannel* input);
    /** Ends the first connection to `input`, if there is one. */
    void remove(qnInputChannel* input);
    /** Index of the first connection that leads to `input`, through a converter or not; 0xFFFFFFFF when there is none.
     */
    unsigned find(const qnInputChannel* input) const;
    qnBool isConnectedTo(const qnInputChannel* input) const { return find(input) != 0xFFFFFFFFu; }
    /** The input of connection `index`, or the converter in front of it. Requires: index < getNumberOfConnections(). */
    qnInputChannel* operator[](unsigned index) const {
        MORVAQNDS_REQUIRE(index < getNumberOfConnections(), "qnOutputChannel::operator[]: index %u is not below %u",
                          index, getNumberOfConnections());
        return static_cast<qnInputChannel*>(connections_->elements()[index]);
    }
    unsigned getNumberOfConnections() const {
        return connections_ == nullptr ? 0 : connections_->usedBytes / static_cast<unsigned>(sizeof(void*));
    }

private:
    qnOutputChannel(const qnOutputChannel&);
    qnOutputChannel& operator=(const qnOutputChannel&);

    unsigned short type_;
    qnVoidPtrArray* connections_;
};

#endif
