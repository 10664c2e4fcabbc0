// Writes a test of a function, in the short form, from its prototype.
#include "prototype.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

namespace {

constexpr char usage[] =
    "Usage: benchex-new [--header FILE] [--link LIBRARY] [--project DIRECTORY] 'PROTOTYPE' ...\n"
    "Writes a test in the short form for each function, to standard output or, with a CMakeLists.txt, into "
    "a\n"
    "new project.\n"
    "  --header FILE        include FILE, which declares the functions (else they are declared as given)\n"
    "  --link LIBRARY       link LIBRARY in the project, a name as in -lNAME or a path\n"
    "  --project DIRECTORY  write DIRECTORY/measure.cpp and DIRECTORY/CMakeLists.txt\n"
    "  --version, --help\n"
    "Example: benchex-new --header filter.h 'int filter(const float* x, float* y, int length)'\n";

struct Options {
    std::string header, link, project;
    std::vector<Prototype> functions;
};

bool any(const Prototype& f, Role role) {
    return std::ranges::any_of(f.arguments, [role](const Argument& a) { return a.role == role; });
}

std::string capital(std::string name) {
    while (!name.empty() && name[0] == '_')
        name.erase(0, 1);
    if (!name.empty())
        name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    return name;
}

/** The parameters of the statement, each with values to begin with. */
std::string parameters(const Prototype& f) {
    std::string text;
    for (const Argument& a : f.arguments) {
        const std::string name = '"' + capital(a.name) + '"';
        if (a.role == Role::length)
            text += ", kvSize(" + name + ", 64, 256, 1024)";
        else if (a.role == Role::integer)
            text += ", kvParm(" + name + ", 1)";
        else if (a.role == Role::real)
            text += ", kvParm(" + name + ", 0.5)";
        else if (a.role == Role::text)
            text += ", kvParm(" + name + ", \"text\")";
    }
    return text;
}

/** The arguments of the set-up: a value for each parameter. */
std::string setUpArguments(const Prototype& f) {
    std::string text;
    for (const Argument& a : f.arguments)
        if (a.role == Role::text)
            text += ", const char* " + a.name;
        else if (a.role == Role::length || a.role == Role::integer || a.role == Role::real)
            text += ", " + a.type + " " + a.name;
    return text;
}

/** The call, and before it what restores a function's only data, which it changes. */
std::string call(const Prototype& f) {
    std::string arguments;
    for (const Argument& a : f.arguments)
        arguments += (arguments.empty() ? "" : ", ") + a.name;
    return "[=] { " + std::string(f.returned == "void" ? "" : "return ") + f.name + "(" + arguments + "); }";
}

void write(std::ostream& out, const Prototype& f, int number) {
    std::string length = "1024";
    for (const Argument& a : f.arguments)
        if (a.role == Role::length)
            length = a.name;
    const bool inPlace = any(f, Role::output) && !any(f, Role::input);
    const bool valueOnly = f.returned.find("size_t") != std::string::npos || f.returned.find("unsigned") == 0;
    out << "\nstatic const kvMeasure measure" << number << "(\"" << f.name << '"'
        << (valueOnly ? ", kvNeverFails" : "") << parameters(f) << ",\n    [](kvData&"
        << (any(f, Role::input) || any(f, Role::output) ? " data" : "") << setUpArguments(f) << ") {\n";
    std::string restore;
    for (const Argument& a : f.arguments) {
        if (a.role == Role::other)
            out << "        " << a.type << " " << a.name << a.behind << "{}; // make it here; a state: auto "
                << a.name << " = data.state(create(...), destroy);\n";
        else if (a.role == Role::input)
            out << "        " << a.type << "* " << a.name << " = data.random(" << length << ");\n";
        else if (a.role == Role::output && !inPlace)
            out << "        " << a.type << "* " << a.name << " = data.output(" << length << ");\n";
        else if (a.role == Role::output) {
            const std::string original = a.name + "Original";
            out << "        " << a.type << " *" << original << " = data.random(" << length << "), *" << a.name
                << " = data.output(" << length << ");\n";
            restore += "std::copy_n(" + original + ", " + length + ", " + a.name + "); ";
        }
    }
    if (restore.empty())
        out << "        return " << call(f) << ";\n";
    else // what is only written need not be restored: then return the call alone
        out << "        return kvBefore([=] { " << restore << "},\n                        " << call(f)
            << ");\n";
    out << "    });\n";
}

/** What a title calls a library that is linked by its name or its file. */
std::string libraryName(const std::string& link) {
    const std::string name = std::filesystem::path(link).stem().string();
    return name.empty() ? "mylib" : name.starts_with("lib") ? name.substr(3) : name;
}

void writeUnit(std::ostream& out, const Options& options) {
    out << "// Tests of functions in the short form; see kvmeasure.h. Values and data are to begin with: "
           "choose yours.\n"
           "#include \"kv.h\"\n";
    if (!options.header.empty())
        out << "#include \"" << options.header << "\"\n";
    const auto inPlace = [](const Prototype& f) { return any(f, Role::output) && !any(f, Role::input); };
    if (std::ranges::any_of(options.functions, inPlace))
        out << "\n#include <algorithm>\n";
    if (options.header.empty()) {
        out << "\n";
        for (const Prototype& f : options.functions)
            out << "extern \"C\" " << f.text << ";\n";
    }
    out << "\n// Name, version, and kvPositiveFails where positive statuses are errors.\n"
           "static const kvLibrary library(\""
        << libraryName(options.link) << "\", \"\", kvNegativeFails);\n";
    int number = 0;
    for (const Prototype& f : options.functions)
        write(out, f, ++number);
}

void writeCMake(std::ostream& out, const Options& options) {
    out << "cmake_minimum_required(VERSION 3.22)\nproject(measure LANGUAGES CXX)\n"
           "if(NOT CMAKE_BUILD_TYPE)\n  set(CMAKE_BUILD_TYPE Release)\nendif()\n"
           "find_package(benchex REQUIRED)\nadd_executable(measure measure.cpp)\n"
           "target_link_libraries(measure PRIVATE benchex::bxmain benchex::kvbinding"
        << (options.link.empty() ? "" : " ") << options.link << ")\n";
}

int fail(const std::string& message) {
    std::cerr << "benchex-new: " << message << "\n";
    return 2;
}

int writeProject(const Options& options) {
    const std::filesystem::path place(options.project);
    std::error_code error;
    std::filesystem::create_directories(place, error);
    for (const char* name : {"measure.cpp", "CMakeLists.txt"})
        if (std::filesystem::exists(place / name))
            return fail((place / name).string() + " is there already; nothing has been written");
    std::ofstream unit(place / "measure.cpp"), cmake(place / "CMakeLists.txt");
    writeUnit(unit, options);
    writeCMake(cmake, options);
    if (!unit.flush() || !cmake.flush())
        return fail("can't write to " + options.project);
    std::cout << "Now: cmake -S " << options.project << " -B " << options.project
              << "/build && cmake --build " << options.project << "/build && " << options.project
              << "/build/measure -B -LP\n";
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    const std::map<std::string, std::string*> texts = {
        {"--header", &options.header}, {"--link", &options.link}, {"--project", &options.project}};
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (const auto text = texts.find(word); text != texts.end()) {
            if (++i == argc)
                return fail(word + " needs a value");
            *text->second = argv[i];
        } else if (word == "--help" || word == "-h") {
            std::cout << usage;
            return 0;
        } else if (word == "--version") {
            std::cout << "benchex-new " BENCHEX_VERSION "\n";
            return 0;
        } else if (word.starts_with("-")) {
            return fail("unknown option " + word + "\n" + usage);
        } else if (auto function = parsePrototype(word)) {
            options.functions.push_back(std::move(*function));
        } else {
            return fail("not a prototype of a function: " + word);
        }
    }
    if (options.functions.empty())
        return fail(std::string("no prototype\n") + usage);
    if (!options.project.empty())
        return writeProject(options);
    writeUnit(std::cout, options);
    return 0;
}
