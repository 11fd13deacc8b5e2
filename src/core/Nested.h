#ifndef MORVAQNDS_NESTED_H
#define MORVAQNDS_NESTED_H

/**
 * Lives on the stack while a call is under way and hears of what happens meanwhile to the things it works on.
 *
 *     class Watch : public Nested<Watch> { ... };
 *
 * Those of one class lie one inside the other, as the calls do. Where none is under way `forEach` is a comparison with
 * null.
 */
template <class Self>
class Nested {
public:
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;

protected:
    Nested() : outer_(innermost_) { innermost_ = this; }
    ~Nested() { innermost_ = outer_; }

    /** Calls `function` with each, from the innermost outwards. */
    template <class Function>
    static void forEach(const Function& function) {
        for (Nested* each = innermost_; each != nullptr; each = each->outer_) function(static_cast<Self&>(*each));
    }

private:
    static Nested* innermost_;

    Nested* const outer_;
};

template <class Self>
Nested<Self>* Nested<Self>::innermost_ = nullptr;

#endif
