#pragma once

#include <QLatin1String>

#include <cstddef>

// QLatin1String's constructor from a bare pointer measures the text with strlen, which only GCC
// evaluates at compile time; taking the length from the literal keeps the constants constexpr
// under clang too.
template <std::size_t N> constexpr QLatin1String latin1Literal(const char (&text)[N])
{
    return QLatin1String(text, int(N - 1));
}
