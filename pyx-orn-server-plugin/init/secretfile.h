#pragma once

#include <QString>

// A file for secrets handed to another program: only its owner can read it, from the moment
// it exists.
class SecretFile
{
public:
    // Creates `path` afresh with mode 0600 and returns a descriptor open for writing, or -1.
    // A regular file already there (left by a run that did not end) is replaced; a link, folder
    // or pipe there is never written through. The folder must be a real folder of root that
    // group and others cannot change, or whoever can change it could swap the file.
    static int create(const QString &path);
};
