#include "plugin.h"

Plugin::Plugin(QObject *parent)
    : QObject(parent)
{
}

Plugin::~Plugin() = default;

bool Plugin::isValid() const
{
    return true;
}
