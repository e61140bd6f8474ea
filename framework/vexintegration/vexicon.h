#pragma once

#include "vexintegration_export.h"

#include <QIcon>
#include <QString>

#include <utility>

class VEXINTEGRATION_EXPORT VexIcon
{
public:
    // The theme icon `name` with the theme icon `emblem.second` drawn over the corner
    // `emblem.first` at half size; `fallback` when the theme has no icon `name`. A missing
    // emblem leaves the icon plain.
    static QIcon fromTheme(const QString &name, const std::pair<Qt::Corner, QString> &emblem,
                           const QIcon &fallback);
};
