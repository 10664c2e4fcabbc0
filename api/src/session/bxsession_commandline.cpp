// From the words of the command line to applied keys.
#include "framework/bxregister.h"
#include "output/bxdiscard.h"
#include "output/bxostream.h"
#include "parameters/bxistream.h"
#include "session/bxdialogue.h"
#include "session/bxsession.h"
#include "system/bxcputype.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {
/** Labels of the library's processor types in lines of the extended help, without the last line end. */
bxString cpuTypeLines() {
    constexpr int columns = 96;
    bxString lines;
    int length = columns;
    for (const bxCpuType::Row& row : bxCpuType::table) {
        const bxString word(row.label);
        if (length + 1 + word.length() > columns) {
            lines += lines.empty() ? "       " : "\n       ";
            length = 7;
        }
        lines += bxString(" ") + word;
        length += 1 + word.length();
    }
    return lines;
}
} // namespace

bool bxSession::parseCommandLine(int argc, char** argv) {
    m_exePath = argc > 0 ? argv[0] : "";
    resetOptions();
    const bxCommandList keys = readCommandKeys(argc, argv);
    settleExitLevel(keys);
    settlePaths(keys);
    g_ostrm.setOutLevel(outPerf);
    m_shared = bxFindSharedFile(keys);
    for (const bxCommandKey& key : keys)
        applyOption(key.key(), key.argument());
    refuseSharedFile();
    removeOldSignal();
    g_ostrm << m_optionsText;
    m_optionsText = "";
    if (m_unopenedFile)
        return fatalError("FATAL ERROR: can't open output file for writing\n");
    if (!openIniFile())
        return fatalError("FATAL ERROR: can't open ini-file for writing\n");
    updateOptions();
    return true;
}

void bxSession::resetOptions() {
    m_askMode = 0;
    m_batchMode = false;
    m_quickMode = false;
    m_enumMode = noEnumeration;
    m_nameMode = 0;
    m_nameExit = false;
    m_unopenedFile = false;
    m_faulty = false;
    m_iniName = "";
    m_optionsText = "Command line options: ";
}

bxCommandList bxSession::readCommandKeys(int argc, char** argv) {
    bxCommandList keys;
    bxString line;
    bxString path;
    if (argc > 1) {
        keys.setArgs(argc - 1, argv + 1);
        m_optionsText += "\n";
    } else if (readCfgFile(line, path)) {
        keys.setArgs(line.c_str());
        keys.removeQuotes();
        m_optionsText << "read from " << path << " file\n";
    } else if (pCmdLine) {
        keys.setArgs(pCmdLine->c_str());
        keys.removeQuotes();
        m_optionsText += "set by _FORCE_CMDLINE preprocessor definition\n";
    } else {
        m_optionsText = "";
    }
    return keys;
}

bool bxSession::readCfgFile(bxString& args, bxString& path) {
    constexpr int maxLine = 1023;
    const bxString name = m_exePath.getFileTitle() + ".cfg";
    for (const bxString& place : {name, m_exePath.getFileDir() + name}) {
        i_stream file(place, ioRead | ioNameAsGiven, false);
        if (file.handle()) {
            file.getline(args);
            args = args.substr(0, maxLine);
            path = place;
            return true;
        }
    }
    return false;
}

void bxSession::settleExitLevel(const bxCommandList& keys) {
    m_exitLevel = exitNone;
    if (keys.isKey('?') || keys.isKey('h'))
        m_exitLevel = exitHelp;
    else if (keys.isKey('e'))
        m_exitLevel = exitEnumerate;
    else if (keys.isKey('v'))
        m_exitLevel = exitVersion;
}

void bxSession::settlePaths(const bxCommandList& keys) {
    const auto last = [&keys](char key) {
        bxString argument;
        keys.getArg(key, argument);
        return argument;
    };
    setInDir(last('p'));
    setOutDir(last('l'));
    setDefName(last('n'));
}

bool bxSession::openIniFile() {
    if (m_iniName.empty())
        return true;
    return g_istrm.setIniFile(m_iniName, m_iniWrite) || !m_iniWrite;
}

void bxSession::refuseSharedFile() {
    if (m_shared.first == 0)
        return;
    unopenedFile();
    g_ostrm << ERR << "-- Can't open file " << m_shared.path << " to write: \n   -" << m_shared.first
            << " and -" << m_shared.second << " name the same file\n"
            << endMessage;
    if (m_shared.first == 'g' || m_shared.second == 'g')
        m_sglName = "";
}

void bxSession::removeOldSignal() {
    if (g_discardOutput)
        return;
    std::error_code error;
    const std::filesystem::path signal = std::filesystem::canonical(m_sglName.c_str(), error);
    if (!error && std::filesystem::is_regular_file(signal, error) && !std::filesystem::remove(signal, error))
        g_ostrm << WARN << "-- Can't remove file " << m_sglName << "\n   " << error.message().c_str() << "\n"
                << endMessage;
}

bool bxSession::fatalError(const char* text) {
    m_faulty = true;
    g_ostrm << text;
    return false;
}

void bxSession::updateOptions() {
    if (bxOption* option = getOption('T')) {
        const int tab = option->descr.find("\t");
        if (tab >= 0)
            option->descr = option->descr.substr(0, tab) + cpuTypeLines() + option->descr.substr(tab + 1);
    }
    if (m_batchMode)
        m_askMode = 0;
    else if (m_askMode == 0)
        m_askMode = askTiming | askParameters;
}

void bxSession::initOption(char key, bxString help, bxKeyInfo info, bxKeyApply apply, bxString descr,
                           bool hidden) {
    m_options.push_back(new bxOption{key, hidden, help, info, apply, descr});
}

bxOption* bxSession::getOption(char key) {
    const auto found =
        std::find_if(m_options.begin(), m_options.end(), [key](const bxOption* o) { return o->key == key; });
    return found == m_options.end() ? nullptr : *found;
}

void bxSession::applyOption(char key, bxString argument) {
    m_optionsText << "-" << key << argument << ": ";
    const bxOption* option = getOption(key);
    if (!option) {
        m_optionsText += "ignored: incorrect option key\n";
        m_faulty = true;
        return;
    }
    m_optionsText << option->info(argument) << "\n";
    option->apply(argument, this);
}
