#ifndef MORVAQNDS_NAMESPACE_H
#define MORVAQNDS_NAMESPACE_H

#include "Export.h"

/**
 * Maps names to small numbers, called atoms, and back.
 *
 *     static int fill(NameSpace* names) { return names->makeAtom("title", 1) == names->noAtom; }
 *     NameSpace names(fill, 0);
 *     unsigned long atom = names.makeAtom("width", 1);
 *     puts(names.nameForAtom(atom));
 *     bool known = names.makeAtom("height", 0) != names.noAtom;
 *
 * A name space numbers its atoms itself (1, 2, 3, ... in order of first creation, never reused), or leaves the numbers
 * to its caller (explicit numbering). Finding a name descends a binary tree ordered by a hash and then by the text;
 * the tree is not balanced. Finding the name of an atom is a table access.
 *
 * Unusual: names that the initialisation function makes are kept by pointer: they must outlive the name space and end
 * with a NUL. Later names are copied.
 *
 * Unusual: misuse ends the process through `abort()`: creating in the way that belongs to the other kind of numbering,
 * exhausted memory, an atom for which the table cannot grow.
 */
class MORVAQNDS_API NameSpace {
public:
    /** One name in the tree. */
    struct Node {
        Node* left;
        Node* right;
        unsigned long atom;
        unsigned long hash;
        char* name;
    };

    /**
     * Calls `init` for the first names (null: there are none); a result other than 0 ends the process with exit
     * status 255. While `init` runs the atoms are numbered by the name space, whichever kind it is to become.
     * `explicitNumbering` other than 0 leaves the numbers of all later atoms to the caller.
     */
    NameSpace(int (*init)(NameSpace*), int explicitNumbering);

    /** Frees all atoms. */
    ~NameSpace();

    NameSpace(const NameSpace&) = delete;
    NameSpace& operator=(const NameSpace&) = delete;

    /**
     * The atom of `name`. If the name is unknown, it is created where `create` is not 0, and otherwise the result is
     * `noAtom`. Requires: `create` is 0 in a name space with explicit numbering; otherwise the process ends.
     */
    unsigned long makeAtom(const char* name, int create);

    /** The same for the name that is the first `len` bytes at `name`. */
    unsigned long makeAtom(const char* name, unsigned len, int create);

    /**
     * The same with a number for the name in case it is created; a name that exists keeps the number that it has.
     * A number that another name has goes over to the new one. Atom 0 has a name like any other but is never valid.
     * Requires: `create` is 0 in a name space that numbers its atoms itself; otherwise the process ends.
     */
    unsigned long makeAtom(unsigned long atom, const char* name, unsigned len, int create);

    /** What `makeAtom` does once the kind of numbering has been checked. */
    unsigned long internAtom(unsigned long atom, const char* name, unsigned len, int create);

    /** 1 if `atom` has a name and is not `noAtom`, else 0. */
    int validAtom(unsigned long atom) const;

    /** The name of `atom`, owned by the name space; null if it has none. */
    const char* nameForAtom(unsigned long atom) const;

    /** Ends the process through `abort()`. */
    [[noreturn]] void atomError();

    /**
     * Frees `node` and all below it, leaves first, and takes them out of the tree and the table. Null does nothing.
     * A copied name whose atom is lower than `firstDynamic` is not freed.
     */
    void freeAtom(Node* node);

    /**
     * Frees the tree and the table and sets `lastAtom` back; without a tree does nothing. Nothing can be created
     * afterwards (the process ends), look-ups find nothing.
     */
    void freeAllAtoms();

    unsigned long noAtom;        ///< 0, the value that means no atom
    unsigned long lastAtom;      ///< the highest atom in use
    Node* root;                  ///< the tree; null without a name
    unsigned capacity;           ///< number of slots of `table`
    Node** table;                ///< the nodes by atom, null where there is none
    int explicitAtoms;           ///< not 0 when the caller chooses the numbers
    unsigned long firstDynamic;  ///< names of atoms from here on are freed with them; 0 during initialisation
};

#endif
