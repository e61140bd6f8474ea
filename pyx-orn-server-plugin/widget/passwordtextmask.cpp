#include "passwordtextmask.h"

#include <QAccessible>
#include <QLineEdit>
#include <QStyle>

#include <utility>

namespace {

bool installed = false;
QAccessible::UpdateHandler previous = nullptr;

QString masked(const QLineEdit *field, const QString &text)
{
    const QChar mask(
        field->style()->styleHint(QStyle::SH_LineEdit_PasswordCharacter, nullptr, field));
    return QString(text.size(), mask);
}

} // namespace

void PasswordTextMask::install()
{
    if (std::exchange(installed, true))
        return;
    previous = QAccessible::installUpdateHandler(&PasswordTextMask::filter);
}

void PasswordTextMask::filter(QAccessibleEvent *event)
{
    const auto *field = qobject_cast<const QLineEdit *>(event->object());
    const QAccessible::Event type = event->type();
    if (!field || field->echoMode() == QLineEdit::Normal ||
        (type != QAccessible::TextInserted && type != QAccessible::TextRemoved &&
         type != QAccessible::TextUpdated))
        return forward(event);
    if (field->echoMode() == QLineEdit::NoEcho)
        return;
    if (type == QAccessible::TextInserted) {
        const auto *change = static_cast<const QAccessibleTextInsertEvent *>(event);
        QAccessibleTextInsertEvent shown(event->object(), change->changePosition(),
                                         masked(field, change->textInserted()));
        shown.setCursorPosition(change->cursorPosition());
        return forward(&shown);
    }
    if (type == QAccessible::TextRemoved) {
        const auto *change = static_cast<const QAccessibleTextRemoveEvent *>(event);
        QAccessibleTextRemoveEvent shown(event->object(), change->changePosition(),
                                         masked(field, change->textRemoved()));
        shown.setCursorPosition(change->cursorPosition());
        return forward(&shown);
    }
    const auto *change = static_cast<const QAccessibleTextUpdateEvent *>(event);
    QAccessibleTextUpdateEvent shown(event->object(), change->changePosition(),
                                     masked(field, change->textRemoved()),
                                     masked(field, change->textInserted()));
    shown.setCursorPosition(change->cursorPosition());
    forward(&shown);
}

void PasswordTextMask::forward(QAccessibleEvent *event)
{
    if (previous)
        return previous(event);
    // Without a handler, Qt gives the change to the platform's bridge, which has no other way in:
    // the mask steps aside for that one call. A table takes a change of its model before any
    // handler sees it, and would take it twice; the bridge only needs to learn that it came.
    QAccessible::installUpdateHandler(nullptr);
    if (event->type() == QAccessible::TableModelChanged) {
        const auto *change = static_cast<const QAccessibleTableModelChangeEvent *>(event);
        QAccessibleTableModelChangeEvent told(event->object(),
                                              QAccessibleTableModelChangeEvent::DataChanged);
        told.setFirstRow(change->firstRow());
        told.setLastRow(change->lastRow());
        told.setFirstColumn(change->firstColumn());
        told.setLastColumn(change->lastColumn());
        QAccessible::updateAccessibility(&told);
    } else {
        QAccessible::updateAccessibility(event);
    }
    QAccessible::installUpdateHandler(&PasswordTextMask::filter);
}
