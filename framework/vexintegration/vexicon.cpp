#include "vexicon.h"

#include <QPainter>
#include <QPixmap>

namespace {

QPoint cornerOrigin(Qt::Corner corner, int size, int emblemSize)
{
    const int far = size - emblemSize;
    switch (corner) {
    case Qt::TopLeftCorner:
        return {0, 0};
    case Qt::TopRightCorner:
        return {far, 0};
    case Qt::BottomLeftCorner:
        return {0, far};
    case Qt::BottomRightCorner:
        break;
    }
    return {far, far};
}

} // namespace

QIcon VexIcon::fromTheme(const QString &name, const std::pair<Qt::Corner, QString> &emblem,
                         const QIcon &fallback)
{
    if (!QIcon::hasThemeIcon(name))
        return fallback;
    const QIcon base = QIcon::fromTheme(name);
    if (emblem.second.isEmpty() || !QIcon::hasThemeIcon(emblem.second))
        return base;

    const QIcon badge = QIcon::fromTheme(emblem.second);
    QIcon composed;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap = base.pixmap(size, size);
        if (pixmap.isNull())
            continue;
        pixmap = pixmap.scaled(size, size);
        const int emblemSize = size / 2;
        QPainter painter(&pixmap);
        painter.drawPixmap(cornerOrigin(emblem.first, size, emblemSize),
                           badge.pixmap(emblemSize, emblemSize).scaled(emblemSize, emblemSize));
        painter.end();
        composed.addPixmap(pixmap);
    }
    return composed.isNull() ? base : composed;
}
