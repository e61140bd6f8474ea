#include "journalreader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

// pyx-sandbox-journal SOCKET RECORD LOG: prints "ready" once the socket takes entries.
int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: pyx-sandbox-journal SOCKET RECORD LOG\n");
        return 2;
    }
    JournalReader reader(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    if (!reader.listen(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "pyx-sandbox-journal: cannot listen on %s: %s\n", argv[1],
                     std::strerror(errno));
        return 1;
    }
    std::puts("ready");
    std::fclose(stdout);
    reader.run();
    return 0;
}
