#ifndef MORVAQNDS_EXEC_H
#define MORVAQNDS_EXEC_H

#include <sys/select.h>

#include "Application.h"
#include "Export.h"
#include "SelectHandler.h"
#include "StubFuncArray.h"
#include "Types.h"
#include "VoidPtrArray.h"

/**
 * The executive: what the event loop waits for and calls. One instance, `qn_theExecutive`, is made by
 * `qnInitializeToolkit` and never destroyed.
 *
 *     qn_theExecutive->addSelectHandler(reader);
 *     qn_theExecutive->loop();
 *
 * One cycle, `poll`:
 *
 *     +-> no handler at all? --yes--> distribute the queued events --> done
 *     |      | no
 *     |   call the pre-select functions
 *     |   wait in select: not at all when events are queued, at most until the first timer is due
 *     |   let time pass for the timers, fire those that are due
 *     |   call the handlers whose descriptors are ready, in ascending order: read, write, exception
 *     |   call the post-select functions
 *     |   distribute the queued events
 *     +-- loop: again, as long as an application is registered
 *
 * Deliberate: without any handler nothing waits and no time passes, for there is nothing to wait for. Failures of
 * `select` (a signal, a closed descriptor) count as "nothing ready".
 *
 * Everything that the cycle calls may change what the cycle works on: what leaves is not called any more, what is added
 * waits for the next cycle.
 */
class MORVAQNDS_API qnExec {
public:
    enum : unsigned { MaxDescriptors = 100, NoDescriptor = 101 };

    qnExec();
    /** Leaves handlers and applications alone. */
    ~qnExec();

    /**
     * Registers a handler, in place of the one that has its descriptor. Requires: 0 <= descriptor < 100, and it is
     * open; in the default build one outside the table is ignored.
     */
    void addSelectHandler(qnSelectHandler* handler);
    /** Clears the entry of the handler's descriptor. Deliberate: whichever handler is there. */
    void removeSelectHandler(qnSelectHandler* handler);

    /** Adds a function that is called before each wait; one that is added twice is called twice. */
    void addPreSelectFunc(qnStubFunc fn);
    /** Adds a function that is called after the handlers. */
    void addPostSelectFunc(qnStubFunc fn);
    /** Removes the first occurrence of the function, if there is one. */
    void removePreSelectFunc(qnStubFunc fn);
    void removePostSelectFunc(qnStubFunc fn);

    void add(qnApplication* application);
    /** Removes the first occurrence; nothing happens when it is not listed. */
    void remove(qnApplication* application);
    qnBool contains(const qnApplication* application) const;

    /** Calls `initialize` on each application that is registered now. */
    void initialize(int argc, char** argv);
    /** Calls `open` on each application that is registered now, open or not. */
    void open();
    /** Calls `close` on each open application, each once. */
    void close();

    /** Computes the descriptor sets anew from the table of handlers. */
    void updateSelectState();
    /** Each computes the sets anew if handlers have come or gone, and returns a copy. */
    fd_set getReadSet();
    fd_set getWriteSet();
    fd_set getExceptionSet();
    /** Whether a wait would block now. False when there is no handler, and when `select` fails. */
    qnBool willBlock();

    /** One cycle; waits at most `timeout` seconds. Negative ones and NaN count as 0. */
    void poll(float timeout);
    /** Cycles until no application is registered; asked after each cycle, so there is at least one. */
    void loop();

    /** The smallest descriptor that had a handler when the sets were last computed; 101 when none had. */
    unsigned short getLowestDescriptor() const { return lowest_; }
    /** One more than the largest descriptor that had a handler when the sets were last computed; 0 when none had. */
    unsigned short getDescriptorLimit() const { return limit_; }
    /** The handler registered for a descriptor; null if there is none. */
    qnSelectHandler* getSelectHandler(int descriptor) const;
    /** Registered applications. */
    unsigned getNumberOfApplications() const { return applications_.length(); }

private:
    friend class qnApplication;
    friend class qnSelectHandler;
    class Cycle;

    qnExec(const qnExec&);
    qnExec& operator=(const qnExec&);

    static void dropHandler(qnSelectHandler* handler);
    static void leaveCycles(const qnSelectHandler* handler);
    static void abandon(qnApplication* application);

    unsigned short lowest_;
    unsigned short limit_;
    qnBool dirty_;
    qnBool readInUse_;
    qnBool writeInUse_;
    qnBool exceptionInUse_;
    fd_set readSet_;
    fd_set writeSet_;
    fd_set exceptionSet_;
    qnSelectHandler* handlers_[MaxDescriptors];
    qnStubFuncArray preSelect_;
    qnStubFuncArray postSelect_;
    qnVoidPtrArray applications_;
    qnExec* nextExec_;  // all executives, so that a handler can be dropped wherever it is registered
};

/** The process's executive; null until `qnInitializeToolkit`. */
extern MORVAQNDS_API qnExec* qn_theExecutive;

#endif
