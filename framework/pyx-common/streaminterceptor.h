#pragma once

#include "pyx_common_export.h"

#include <QByteArray>

#include <cstdio>
#include <memory>

// Captures what the process writes to a stream's file descriptor, whoever writes it (C stdio,
// iostreams, Qt's message handler), from construction until destruction. Only one capture is
// active at a time in the process; a second one captures nothing.
class PYX_COMMON_EXPORT StreamInterceptor
{
public:
    explicit StreamInterceptor(FILE *stream);
    ~StreamInterceptor();

    // Everything captured so far, including what was written just before the call.
    QByteArray streamReadAll();
    bool isCapturing() const;

private:
    StreamInterceptor(const StreamInterceptor &) = delete;
    StreamInterceptor &operator=(const StreamInterceptor &) = delete;

    struct Private;
    std::unique_ptr<Private> d;
};
