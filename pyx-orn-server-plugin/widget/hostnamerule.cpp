#include "hostnamerule.h"

#include <QRegularExpression>

bool HostnameRule::hasBlankOrControl(const QString &text)
{
    for (const QChar c : text) {
        if (c.isSpace() || c.category() == QChar::Other_Control)
            return true;
    }
    return false;
}

bool HostnameRule::isKeptAsTyped(const QString &name)
{
    // \z, not $: a dollar sign also matches before a final line feed.
    static const QRegularExpression labels(
        QStringLiteral("\\A[A-Za-z0-9]([A-Za-z0-9-]*[A-Za-z0-9])?(\\.[A-Za-z0-9]([A-Za-z0-9-]*[A-"
                       "Za-z0-9])?)*\\z"));
    return name.size() <= 64 && labels.match(name).hasMatch();
}
