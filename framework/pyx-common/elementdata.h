#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

// A property record. Readers ask with a default; writers replace.
class ElementData
{
public:
    ElementData() = default;

    QMap<QString, QVariant> properties;
};
