// Words of a command line and the line of a ".cfg" file: which keys they are, what is said of each, and what
// -d sets.
#include "fuzzinput.h"
#include "parameters/bxdatalist.h"
#include "session/bxcommand.h"
#include "session/bxkeys.h"

namespace {

/** The letter of a key's word; two long words stand for keys of one. */
char letterOf(const std::string& word) {
    if (word == "--help")
        return 'h';
    return word == "--version" ? 'v' : word[1];
}

/** Every word that has the form of a key is one, in the order written. */
void keysAreTheWords(const bxCommandList& keys, const std::vector<std::string>& words) {
    auto key = keys.begin();
    for (const std::string& word : words) {
        const bool isKey = word.size() >= 2 && (word[0] == '-' || word[0] == '/');
        require(isKey == isKeyString(toText(word)), "a key begins with - or / and has a character");
        if (!isKey)
            continue;
        require(key != keys.end() && key->isKey(letterOf(word)), "every key is there, in order");
        ++key;
    }
    require(key == keys.end(), "there is no key that was not written");
}

void lastOneCounts(const bxCommandList& keys) {
    for (const bxCommandKey& key : keys) {
        bxString last;
        for (const bxCommandKey& other : keys)
            if (other.isKey(key.key()))
                last = other.argument();
        bxString argument;
        require(keys.getArg(key.key(), argument) && argument == last,
                "the last of equal keys gives the argument");
    }
}

/** What the report of the command line says of each key; what -d sets is found again. */
void isReported(const bxCommandList& keys) {
    bxDataList data;
    for (const bxCommandKey& key : keys) {
        for (const bxKeyRow& row : bxKeyTable())
            if (row.key == key.key())
                require(!row.info(key.argument()).empty(), "something is said of each key");
        if (key.isKey('d'))
            data.set(key.argument());
    }
    for (const bxData& setting : data) {
        bxString value;
        require(!setting.name.empty(), "a setting has a name");
        require(data.get(setting.name, value) && value == setting.value,
                "a setting is found by its name, once");
    }
}

bxCommandList keysOfWords(std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
        word.resize(std::min(word.size(), word.find('\0')));
        arguments.push_back(word.data());
    }
    bxCommandList keys;
    keys.setArgs(static_cast<int>(arguments.size()), arguments.data());
    return keys;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const bool oneLine = input.ConsumeBool();
    const std::string text = input.ConsumeRemainingBytesAsString();
    bxCommandList keys;
    if (oneLine) {
        keys.setArgs(toText(text).c_str());
    } else {
        std::vector<std::string> words = split(text, '\n');
        keys = keysOfWords(words);
        keysAreTheWords(keys, words);
    }
    lastOneCounts(keys);
    isReported(keys);
    return 0;
}
