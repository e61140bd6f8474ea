#pragma once

#include <QByteArray>
#include <QTextCodec>

#include <cstdio>
#include <cstdlib>

// A broken property ends the run as a crash, so that libFuzzer keeps the input that broke it.
inline void require(bool holds, const char *property)
{
    if (!holds) {
        std::fprintf(stderr, "property broken: %s\n", property);
        std::abort();
    }
}

// The plug-in decodes the tools' bytes with the locale's codec. The hosts it runs on use UTF-8,
// so every harness fixes that codec instead of taking whatever locale the fuzzing machine has.
// Each fuzzer is one source file, so this definition comes once into each program.
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    return 0;
}
