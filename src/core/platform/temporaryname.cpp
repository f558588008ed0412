#include "core/platform/temporaryname.h"

#include <cstring>
#include <random>

namespace duomir {

namespace {

constexpr char Prefix[] = ".duomir-";
constexpr char Suffix[] = ".tmp";
constexpr std::size_t PrefixLength = sizeof Prefix - 1;
constexpr std::size_t SuffixLength = sizeof Suffix - 1;
constexpr std::size_t RandomLength = 8;
constexpr char Alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";

bool inAlphabet(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

} // namespace

std::string newTemporaryName()
{
    thread_local std::mt19937_64 random{std::random_device{}()};
    std::uniform_int_distribution<std::size_t> pick(0, sizeof Alphabet - 2);
    std::string name(Prefix);
    for (std::size_t i = 0; i < RandomLength; ++i)
        name += Alphabet[pick(random)];
    name += Suffix;
    return name;
}

bool isTemporaryName(const char *name, std::size_t length)
{
    if (length != PrefixLength + RandomLength + SuffixLength || name[0] != '.')
        return false;
    if (std::memcmp(name, Prefix, PrefixLength) != 0 ||
        std::memcmp(name + PrefixLength + RandomLength, Suffix, SuffixLength) != 0)
        return false;
    for (std::size_t i = PrefixLength; i < PrefixLength + RandomLength; ++i) {
        if (!inAlphabet(name[i]))
            return false;
    }
    return true;
}

} // namespace duomir
