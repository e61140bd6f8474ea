#pragma once

#include <QString>

class QLocale;
class QTranslator;

// Loads the plug-in's catalogue for `locale` from `folder` and installs it in the application,
// parented to it. Returns the translator, or null (and installs nothing) when there is no file.
QTranslator *installPluginTranslator(const QLocale &locale, const QString &folder);
