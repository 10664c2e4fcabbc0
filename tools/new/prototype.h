/** \file
 * A C prototype, taken apart as far as a test of the function needs it.
 */
#ifndef PROTOTYPE_H
#define PROTOTYPE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/** What an argument is for a test. */
enum class Role {
    input,   /**< numbers that the function reads */
    output,  /**< numbers that it writes */
    length,  /**< how many elements there are */
    integer, /**< another whole number */
    real,    /**< a floating-point number */
    text,    /**< const char* */
    other    /**< what the library alone can make: a state, an enumeration, a structure, a function */
};

struct Argument {
    Role role = Role::other;
    std::string type;   /**< of the elements of input and output; of the argument else */
    std::string behind; /**< what stands behind the name of a function */
    std::string name;
};

struct Prototype {
    std::string text; /**< with single blanks, without the semicolon */
    std::string returned;
    std::string name;
    std::vector<Argument> arguments;
};

/** Takes a prototype apart; nothing when the text is none. Arguments without a name get one. */
std::optional<Prototype> parsePrototype(std::string_view text);

#endif
