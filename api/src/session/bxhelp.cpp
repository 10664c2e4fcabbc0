// The three kinds of help.
#include "output/bxostream.h"
#include "session/bxkeys.h"
#include "session/bxsession.h"

namespace {
/** The first line of a help. */
void writeTitle(const char* title, bool hide) {
    g_ostrm << title << (hide ? "" : " with hidden keys") << "\n";
}

bool isLeftOut(const bxOption& option, bool hide) {
    return hide && option.hidden;
}
} // namespace

void bxSession::hint(char what, bool hide) {
    if (what == hintShort)
        hint_quick(hide);
    else if (what == (hide ? 'h' : '?'))
        hint_full(hide);
    else
        hint_descr(what);
}

void bxSession::hint_quick(bool hide) {
    writeTitle("QUICK HELP", hide);
    for (const bxOption* option : m_options)
        if (!isLeftOut(*option, hide))
            g_ostrm << option->help;
}

void bxSession::hint_full(bool hide) {
    writeTitle("EXTENDED HELP", hide);
    for (const bxOption* option : m_options) {
        if (isLeftOut(*option, hide) || option->help.empty())
            continue;
        g_ostrm << "\n" << option->help;
        if (option->hidden)
            g_ostrm << "This is hidden key used by developers only\n";
        g_ostrm << option->descr;
    }
}

void bxSession::hint_descr(char key) {
    g_ostrm << "EXTENDED KEY HELP\n";
    const bxOption* option = getOption(key);
    if (!option) {
        g_ostrm << "Key -" << key << " is not valid\n";
        return;
    }
    if (option->help.empty())
        g_ostrm << "Key -" << key << " is deprecated\n";
    else
        g_ostrm << option->help;
    g_ostrm << (option->descr.empty() ? bxString("No detailed description for this key\n") : option->descr);
}
