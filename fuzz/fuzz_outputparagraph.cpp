// What the initialisation window shows of one chunk of the tool's output, against a plain
// restatement: the text up to the first NUL, with every ESC '[' x{2,4} 'm' removed in one pass
// from left to right (x any character, a line feed too, the longest that fits first), then
// without the line feeds at its end. A pass can leave or even join a new sequence from the
// pieces around one it removed; the output keeps that, as the window does.
//
// Input: the chunk as the tool wrote it. The same bytes, read as UTF-16, also go through
// removeTrailingNewlines on their own, lone surrogates included.
#include "fuzzcheck.h"
#include "initserverdialog.h"

#include <QString>

#include <cstddef>
#include <cstring>
#include <cstdint>
#include <string>

namespace {

std::u32string shown(const std::string &chunk)
{
    // The decoding is the locale codec's business, not this function's; the rule then speaks
    // of characters, which for PCRE are whole code points, never halves of a surrogate pair.
    const std::string text = chunk.substr(0, chunk.find('\0'));
    const std::u32string in = QString::fromUtf8(text.data(), int(text.size())).toStdU32String();
    std::u32string out;
    for (std::size_t i = 0; i < in.size();) {
        std::size_t length = 0;
        if (in[i] == U'\x1b' && i + 1 < in.size() && in[i + 1] == U'[') {
            for (std::size_t inner = 4; inner >= 2 && length == 0; --inner) {
                if (i + 2 + inner < in.size() && in[i + 2 + inner] == U'm')
                    length = 3 + inner;
            }
        }
        if (length > 0)
            i += length;
        else
            out += in[i++];
    }
    while (!out.empty() && out.back() == U'\n')
        out.pop_back();
    return out;
}

void checkTrailingNewlines(const std::uint8_t *data, std::size_t size)
{
    std::u16string units(size / 2, u'\0');
    std::memcpy(&units[0], data, units.size() * sizeof(char16_t));
    const QString text = QString::fromStdU16String(units);
    const QString result = InitServerDialog::removeTrailingNewlines(text);
    require(text.startsWith(result), "only the end of the text goes");
    require(!result.endsWith(QLatin1Char('\n')), "no line feed at the end");
    for (int i = result.size(); i < text.size(); ++i)
        require(text.at(i) == QLatin1Char('\n'), "nothing but line feeds goes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string chunk(reinterpret_cast<const char *>(data), size);
    const QString paragraph =
        InitServerDialog::outputParagraph(QByteArray(chunk.data(), int(size)));
    const std::u32string expected = shown(chunk);
    require(paragraph.toStdU32String() == expected, "the paragraph is the chunk as the rule says");
    require(paragraph.size() <= int(chunk.size()), "never longer than the chunk");
    require(!paragraph.endsWith(QLatin1Char('\n')), "no line feed at the end");

    checkTrailingNewlines(data, size);
    return 0;
}
