#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

#include <functional>

class ConsoleWindow;
class QWidget;

// Drives the ORN server form through a creation, the way an administrator would, and saves a
// picture of every step. Each step waits until the console shows what it expects; modal boxes
// are answered from the outside, as their own event loops run.
class Walkthrough : public QObject
{
    Q_OBJECT

public:
    Walkthrough(ConsoleWindow &window, const QString &folder);

    void start();

private:
    struct Step
    {
        QString picture;
        std::function<bool()> ready;
        std::function<void()> act;
    };

    void poll();
    bool photograph(const QString &picture);
    QWidget *form() const;
    template<typename T> T *formControl(const char *name) const;

    ConsoleWindow &m_window;
    QString m_folder;
    QList<Step> m_steps;
    int m_current = 0;
    int m_settledReads = 0;
    int m_readsBeforeClose = 0;
    QTimer m_timer;
    QElapsedTimer m_clock;
};
