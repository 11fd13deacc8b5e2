#ifndef MORVAQNDS_APPLICATION_H
#define MORVAQNDS_APPLICATION_H

#include "Export.h"
#include "Obj.h"
#include "Types.h"

/**
 * What keeps the event loop running: it registers with the executive when it is made, and the loop ends when no
 * application is registered any more.
 *
 *     class Editor : public qnApplication {
 *     public:
 *         const char* className() const override { return "Editor"; }
 *         void initialize(int argc, char** argv) override { ... }
 *     };
 *     Editor editor;
 *     qn_theExecutive->initialize(argc, argv);
 *     qn_theExecutive->open();
 *     qn_theExecutive->loop();                    // until editor.close() is called
 *
 * Deliberate: one that is never opened keeps the loop running too, until it is closed.
 *
 * Requires: an application that was never opened is closed before it is destroyed. Otherwise it stays registered (the
 * loop goes on, but nothing is called on it); a checked build ends the process.
 */
class MORVAQNDS_API qnApplication : public qnObj {
public:
    /** Registers with `qn_theExecutive`. Requires: the toolkit is initialised. */
    qnApplication();
    /** Closes the application if it is open. */
    ~qnApplication() override;

    const char* className() const override = 0;

    /** Receives the program's arguments; called by `qnExec::initialize`. */
    virtual void initialize(int argc, char** argv) = 0;
    /** Marks the application as open. */
    virtual void open();
    /** Unregisters it and marks it as closed. */
    virtual void close();

    qnBool isOpen() const { return open_; }

private:
    qnApplication(const qnApplication&);
    qnApplication& operator=(const qnApplication&);

    qnBool open_;
};

#endif
