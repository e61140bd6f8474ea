// What the initialisation window shows of one chunk of the tool's output, against a plain
// restatement: the text up to the first NUL, with every ESC '[' x{2,4} 'm' removed in one pass
// from left to right (x any character, a line feed too, the longest that fits first), then
// without the line feeds at its end. A pass can leave or even join a new sequence from the
// pieces around one it removed; the output keeps that, as the window does. The paragraph's end
// is removeTrailingNewlines's work, and every text that function gets comes this way.
//
// Input: the chunk as the tool wrote it.
#include "fuzzcheck.h"
#include "initserverdialog.h"

#include <QString>

#include <cstddef>
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string chunk(reinterpret_cast<const char *>(data), size);
    const QString paragraph = InitServerDialog::removeTrailingNewlines(
        InitServerDialog::outputText(QByteArray(chunk.data(), int(size))));
    const std::u32string expected = shown(chunk);
    require(paragraph.toStdU32String() == expected, "the paragraph is the chunk as the rule says");
    return 0;
}
