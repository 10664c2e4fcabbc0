#include "prototype.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>

namespace {

using Words = std::vector<std::string>;

bool isWordPart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == ':';
}

/** Names and single signs; what stands between "<" and ">" belongs to the name before. */
Words split(std::string_view text) {
    Words words;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i + 1;
        if (std::isspace(static_cast<unsigned char>(text[i]))) {
            i = end;
            continue;
        }
        if (isWordPart(text[i])) {
            while (end < text.size() && isWordPart(text[end]))
                ++end;
            if (end < text.size() && text[end] == '<')
                end = std::min(text.find('>', end), text.size() - 1) + 1;
        }
        words.emplace_back(text.substr(i, end - i));
        i = end;
    }
    return words;
}

bool isName(const std::string& word) {
    return std::isalpha(static_cast<unsigned char>(word[0])) || word[0] == '_';
}

bool isOneOf(const std::string& word, const std::set<std::string>& words) {
    return words.contains(word);
}

const std::set<std::string> integerWords = {"int",      "unsigned", "signed",     "short",    "long",
                                            "char",     "size_t",   "ptrdiff_t",  "int8_t",   "int16_t",
                                            "int32_t",  "int64_t",  "uint8_t",    "uint16_t", "uint32_t",
                                            "uint64_t", "ssize_t",  "std::size_t"};
const std::set<std::string> realWords = {"float", "double"};
const std::set<std::string> leftOut = {"const",    "restrict", "__restrict", "__restrict__",
                                       "volatile", "struct",   "enum",       "static",
                                       "extern",   "inline",   "register"};

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/** A blank stands where two names meet, and behind "*", "&" and ",". */
std::string joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) {
        const bool blank = !text.empty() &&
                           (isName(word) || std::isdigit(static_cast<unsigned char>(word[0]))) &&
                           text.back() != '(' && text.back() != '[';
        text += (blank ? " " : "") + word;
    }
    return text;
}

bool isComplex(const std::string& type) {
    return lower(type).find("complex") != std::string::npos;
}

bool isNumber(const Words& type) {
    return !type.empty() && (std::ranges::all_of(type,
                                                 [](const std::string& word) {
                                                     return isOneOf(word, integerWords) ||
                                                            isOneOf(word, realWords) || word == "bool";
                                                 }) ||
                             isComplex(joined(type)));
}

bool namesLength(const std::string& name) {
    constexpr std::array marks = {"len", "size", "count", "num", "samples"};
    const std::string word = lower(name);
    return word == "n" || word == "_n" || std::ranges::any_of(marks, [&word](const char* mark) {
               return word.find(mark) != std::string::npos;
           });
}

/** Whether the last name of a declaration is the argument's own and no part of its type. */
bool endsWithOwnName(const Words& type) {
    return type.size() > 1 && isName(type.back()) && !isOneOf(type.back(), integerWords) &&
           !isOneOf(type.back(), realWords);
}

Argument argumentOf(const Words& words) {
    Argument argument;
    const auto has = [&words](const char* sign) { return std::ranges::find(words, sign) != words.end(); };
    if (has("(")) { // a function
        Words declared = words;
        const auto star = std::ranges::find(declared, "*");
        if (star == declared.end())
            return argument;
        if (const auto name = star + 1; name != declared.end() && isName(*name)) {
            argument.name = *name;
            declared.erase(name);
        }
        const auto behind = std::ranges::find(declared, "*") + 1;
        argument.type = joined({declared.begin(), behind});
        argument.behind = joined({behind, declared.end()});
        return argument;
    }
    const bool array = has("[");
    const bool constant = has("const") && std::ranges::find(words, "const") < std::ranges::find(words, "*");
    Words type(words.begin(), std::ranges::find(words, "["));
    const auto pointers = std::ranges::count(type, "*") + std::ranges::count(type, "&") + array;
    std::erase_if(type, [](const std::string& word) { return isOneOf(word, leftOut); });
    const bool named = endsWithOwnName(type);
    if (named) {
        argument.name = type.back();
        type.pop_back();
    }
    Words whole = words; // for what is no data
    std::erase(whole, "&");
    if (named)
        whole.erase(std::ranges::find(whole, argument.name));
    std::erase_if(type, [](const std::string& word) { return !isName(word); });
    argument.type = joined(type);
    const bool number = isNumber(type);
    if (pointers == 1 && argument.type == "char" && constant && !array)
        argument.role = Role::text;
    else if (pointers == 1 && (number || argument.type == "void") && !has("&"))
        argument.role = constant ? Role::input : Role::output;
    else if (pointers == 0 && isNumber(type) && !isComplex(argument.type))
        argument.role = isOneOf(type.back(), realWords) ? Role::real : Role::integer;
    if (argument.role == Role::other)
        argument.type = joined(whole);
    else if (argument.type == "void")
        argument.type = "unsigned char";
    return argument;
}

void nameAll(std::vector<Argument>& arguments) {
    int data = 0, further = 0;
    const auto next = [](const char* names, int& n) {
        std::string name(1, names[n % 3]);
        return n++ < 3 ? name : name + std::to_string(n / 3 + 1);
    };
    for (Argument& argument : arguments) {
        if (argument.name == "data") // the set-up's own argument
            argument.name = "samples";
        if (!argument.name.empty())
            continue;
        const bool isData = argument.role == Role::input || argument.role == Role::output;
        argument.name = argument.role == Role::length ? "length"
                        : isData                      ? next("xyz", data)
                                                      : next("abc", further);
    }
}

/** The number of elements: the integer whose name says so, else the first one where there are data. */
void findLength(std::vector<Argument>& arguments) {
    const auto isInteger = [](const Argument& a) {
        return a.role == Role::integer && lower(a.name).find("log") == std::string::npos;
    };
    auto length = std::ranges::find_if(
        arguments, [&](const Argument& a) { return isInteger(a) && namesLength(a.name); });
    const bool data = std::ranges::any_of(
        arguments, [](const Argument& a) { return a.role == Role::input || a.role == Role::output; });
    if (length == arguments.end() && data)
        length = std::ranges::find_if(arguments, isInteger);
    if (length != arguments.end())
        length->role = Role::length;
}

} // namespace

std::optional<Prototype> parsePrototype(std::string_view text) {
    Words words = split(text);
    while (!words.empty() && words.back() == ";")
        words.pop_back();
    if (words.size() > 2 && words[0] == "extern" && words[1] == "\"") // extern "C"
        words.erase(words.begin(), words.begin() + 4);
    const auto open = std::ranges::find(words, "(");
    if (open == words.end() || open - words.begin() < 2 || words.back() != ")" || !isName(*(open - 1)))
        return std::nullopt;

    Prototype prototype;
    prototype.text = joined(words);
    prototype.name = *(open - 1);
    Words returned(words.begin(), open - 1);
    std::erase_if(returned, [](const std::string& word) { return isOneOf(word, leftOut); });
    prototype.returned = joined(returned);
    Words current;
    int depth = 0;
    for (auto word = open + 1; word != words.end(); ++word) {
        depth += *word == "(";
        depth -= *word == ")";
        if (depth < 0 || (depth == 0 && *word == ",")) {
            if (!current.empty() && !(current.size() == 1 && current[0] == "void"))
                prototype.arguments.push_back(argumentOf(current));
            current.clear();
        } else {
            current.push_back(*word);
        }
    }
    if (depth != -1)
        return std::nullopt;
    findLength(prototype.arguments);
    nameAll(prototype.arguments);
    return prototype;
}
