#ifndef MORVAQNDS_WATCH_H
#define MORVAQNDS_WATCH_H

/**
 * Tells whether an object survived a call that may have destroyed it.
 *
 *     Watch watch(event);
 *     event->deliver();
 *     if (watch.alive()) delete event;
 *
 * Watches live on the stack, one inside the other. The destructor of what is watched calls `gone`; where nothing is
 * watched that is a comparison with null.
 */
class Watch {
public:
    explicit Watch(const void* object) : object_(object), outer_(innermost_) { innermost_ = this; }
    ~Watch() { innermost_ = outer_; }

    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    bool alive() const { return object_ != nullptr; }

    static void gone(const void* object) {
        for (Watch* watch = innermost_; watch != nullptr; watch = watch->outer_) {
            if (watch->object_ == object) watch->object_ = nullptr;
        }
    }

private:
    static Watch* innermost_;

    const void* object_;
    Watch* outer_;
};

#endif
