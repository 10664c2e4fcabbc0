#include "parameters/bxistream.h"

#include "output/bxiostream.h"
#include "output/bxostream.h"
#include "output/bxpaths.h"
#include "output/bxstorage.h"
#include "parameters/bxparameter.h"

namespace {

constinit bxStorage<bxIStream> input;

/** Number of units whose counter object lives. */
constinit int units = 0;

/** Answers to questions. */
class Console : public bxValueSource {
  public:
    explicit Console(i_stream& in) : m_in(in) {}

    std::optional<bxGiven> valueOf(const bxQuestion& question) override {
        c_out << bxString("\n ") + question.prompt + " [" + question.deflt + "] = ";
        c_out.flush();
        bxString answer;
        m_in.getline(answer);
        answer.trim();
        if (answer.empty())
            return std::nullopt;
        return bxGiven{answer, bxGiven::fromConsole, "from console"};
    }

  private:
    i_stream& m_in;
};

bxGiven defaultOf(const bxQuestion& question) {
    return {question.deflt, bxGiven::fromDefault, "the default"};
}

} // namespace

constinit bxIStream& g_istrm = input.object;

bxIStreamInit::bxIStreamInit() {
    if (units++ == 0)
        std::construct_at(&g_istrm);
}

bxIStreamInit::~bxIStreamInit() {
    if (--units == 0)
        std::destroy_at(&g_istrm);
}

bxIStream::~bxIStream() {
    setIStream(nullptr);
}

void bxIStream::setIStream(i_stream* in) {
    if (m_in != &c_in && m_in != in)
        delete m_in;
    m_in = in;
}

bool bxIStream::setIniFile(bxString name, bool update) {
    deleteIniFile();
    m_ini = std::make_unique<bxIniFile>();
    m_updateIni = update;
    return m_ini->open(bxPaths::getInPath(name), update);
}

bool bxIStream::writeIniFile() {
    m_updateIni = false;
    return !m_ini || m_ini->finish();
}

bool bxIStream::deleteIniFile() {
    const bool written = writeIniFile();
    m_ini.reset();
    return written;
}

bxString bxIStream::setIniSection(bxString name) {
    bxString previous = m_section;
    m_section = name;
    return previous;
}

const bxGiven& bxIStream::find(const bxString& name, const bxString& deflt, const bxString& prompt) {
    expect(name);
    const bxQuestion question{m_section, name, deflt, prompt.empty() ? name : prompt};
    std::optional<bxGiven> given = m_data.valueOf(question);
    if (!given && m_ini)
        given = m_ini->valueOf(question);
    if (!given && m_in)
        given = Console(*m_in).valueOf(question);
    m_given = given ? *given : defaultOf(question);
    return m_given;
}

bool bxIStream::isGiven(const bxString& name) {
    expect(name);
    const bxQuestion question{m_section, name, "", ""};
    return m_data.valueOf(question) || (m_ini && m_ini->valueOf(question));
}

void bxIStream::keep(const bxString& name, const bxString& text, const bxString& same,
                     const bxString& valid) {
    if (!m_updateIni || !m_ini)
        return;
    const bool asGiven = bxIniFile::readsBack(name, text);
    if (asGiven || bxIniFile::readsBack(name, same))
        m_ini->keep(m_section, name, asGiven ? text : same, valid);
    else
        g_ostrm << ERR << "-- Can't write " << name << " = " << text
                << " to the ini file: it would be read as something else\n"
                << endMessage;
}

bxString bxIStream::getItemValue(bxString name, bxString deflt, bxString prompt, bxString valid) {
    bxString text = find(name, deflt, prompt).text;
    keep(name, text, text, valid);
    return text;
}

bxString bxIStream::getItemValue(i_stream& in, bxString prompt, bxString deflt) {
    const bxQuestion question{m_section, "", deflt, prompt};
    m_given = Console(in).valueOf(question).value_or(defaultOf(question));
    return m_given.text;
}

void bxIStream::expect(const bxString& name) {
    m_expected[m_section.c_str()].insert(name.c_str());
}

void bxIStream::expect(const bxList<bxParameter*>& parms) {
    m_expected[m_section.c_str()];
    for (const bxParameter* parm : parms)
        if (parm->needsInput() && !parm->name().empty())
            expect(parm->name());
}

void bxIStream::sayOnce(const bxString& message) {
    if (m_said.insert(message.c_str()).second)
        g_ostrm << ERR << message << endMessage;
}
