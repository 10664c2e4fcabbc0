// Ini files: any text is read, what is set reads back, the rest is kept, and writing is settled after one
// time.
#include "fuzzinput.h"
#include "parameters/bxinifile.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

/** A file of this process, in memory where the system has a place for that. */
class File {
  public:
    File() {
        const fs::path memory = "/dev/shm";
        std::string name =
            (fs::is_directory(memory) ? memory : fs::temp_directory_path()) / "fuzz_ini_XXXXXX";
        require(mkdtemp(name.data()) != nullptr, "there is a place for files");
        m_directory = name;
    }
    ~File() { fs::remove_all(m_directory); }
    std::string path() const { return m_directory / "x.ini"; }

  private:
    fs::path m_directory;
};

const std::string& path() {
    static const File file;
    static const std::string name = file.path();
    return name;
}

std::string content() {
    std::ifstream file(path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

using Model = std::map<std::pair<std::string, std::string>, std::string>;

std::string asString(const bxString& text) {
    return std::string(text.view());
}

/** Trimmed, on one line, without what has a meaning in the file. */
std::string word(FuzzedDataProvider& input) {
    std::string text = input.ConsumeRandomLengthString(24);
    std::erase_if(text,
                  [](char c) { return std::string_view("\n\r=[]/\0", 7).find(c) != std::string_view::npos; });
    bxString trimmed(text.c_str());
    trimmed.trim();
    return asString(trimmed);
}

/** Sets, deletes and erases, in the file and in a model of what was set. */
void change(bxIniFile& file, Model& model, FuzzedDataProvider& input) {
    const std::string section = word(input), key = word(input);
    switch (input.ConsumeIntegralInRange(0, 4)) {
    case 0:
        file.deleteKey(section.c_str(), key.c_str());
        model.erase({section, key});
        require(!file.valueExist(section.c_str(), key.c_str()), "a deleted key is gone");
        break;
    case 1:
        file.eraseSection(section.c_str());
        std::erase_if(model, [&](const auto& entry) { return entry.first.first == section; });
        require(!file.sectionExist(section.c_str()), "an erased section is gone");
        break;
    default: {
        const std::string value = word(input);
        file.write(section.c_str(), key.c_str(), value.c_str(), word(input).c_str());
        require(file.sectionExist(section.c_str()), "a section is there once it was written to");
        if (!key.empty())
            model[{section, key}] = value;
    }
    }
}

void holds(bxIniFile& file, const Model& model) {
    for (const auto& [place, value] : model) {
        require(asString(file.read(place.first.c_str(), place.second.c_str(), "(none)")) == value,
                "what was set is read");
    }
}

/** The file written back, and read and written once more. */
std::string rewritten() {
    bxIniFile file;
    require(file.open(path().c_str(), true), "the file opens");
    file.close();
    return content();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    std::ofstream(path(), std::ios::binary | std::ios::trunc) << input.ConsumeRandomLengthString();
    Model model;
    {
        bxIniFile file;
        require(file.open(path().c_str(), true), "the file opens");
        while (input.remaining_bytes() > 0)
            change(file, model, input);
        holds(file, model);
    }
    bxIniFile file;
    require(file.open(path().c_str(), false), "the rewritten file opens");
    holds(file, model);
    file.close();
    const std::string once = rewritten();
    require(rewritten() == once, "writing a written file changes nothing");
    return 0;
}
