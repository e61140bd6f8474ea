#pragma once

#include <QByteArray>
#include <QString>

// Replaces a file's content so that it holds either the old bytes or all of the new ones.
class AtomicFile
{
public:
    enum Result {
        Replaced,
        // Neither the file nor a new file beside it could be opened; nothing changed.
        NotOpened,
        // Writing, syncing, keeping owner, mode and extended attributes, or moving into place
        // failed; the old content is kept.
        NotWritten,
    };

    // A new file is written beside the old one, given its owner, mode and extended attributes
    // (ACL and security label among them), and moved over it; a link keeps its place and its
    // final target is replaced. A file mounted over, which cannot
    // be replaced, is rewritten in place.
    static Result replace(const QString &path, const QByteArray &content);
};
