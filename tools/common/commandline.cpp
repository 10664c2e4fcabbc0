#include "commandline.h"

#include "cells.h"

#include <iostream>

void addShare(CLI::App& app, const std::string& name, double& share, int most, const std::string& help) {
    const auto take = [name, most, &share](const std::string& text) {
        std::string_view digits = trimmed(text);
        if (digits.ends_with('%'))
            digits = trimmed(digits.substr(0, digits.size() - 1));
        const auto number = toNumber(digits);
        if (!number || *number < 0 || *number > most) {
            throw CLI::ValidationError(name,
                                       "\"" + text + "\" is no percentage from 0 to " + std::to_string(most));
        }
        share = *number / 100;
    };
    app.add_option_function<std::string>(name, take, help)->type_name("PERCENT");
}

int runProgram(CLI::App& app, int argc, char** argv, const std::function<int()>& work) {
    app.set_version_flag("--version", app.get_name() + " " BENCHEX_VERSION);
    int status = done;
    try {
        app.parse(argc, argv);
        status = work();
    } catch (const CLI::Success& help) {
        app.exit(help);
    } catch (const CLI::ParseError& error) {
        std::cerr << app.get_name() << ": " << error.what() << "\nTry '" << app.get_name() << " --help'.\n";
        return cannotDo;
    } catch (const std::exception& error) {
        std::cerr << app.get_name() << ": " << error.what() << "\n";
        return cannotDo;
    }
    if (!std::cout.flush()) {
        std::cerr << app.get_name() << ": the result cannot be written\n";
        return cannotDo;
    }
    return status;
}
