#include "grouptitlestyle.h"

#include <QApplication>
#include <QStyleFactory>
#include <QStyleOption>

GroupTitleStyle::GroupTitleStyle()
    : QProxyStyle(QStyleFactory::create(QApplication::style()->objectName()))
{}

QRect GroupTitleStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                                      SubControl subControl, const QWidget *widget) const
{
    QRect rect = QProxyStyle::subControlRect(control, option, subControl, widget);
    const auto *group = qstyleoption_cast<const QStyleOptionGroupBox *>(option);
    if (control != CC_GroupBox || subControl != SC_GroupBoxLabel || !group)
        return rect;
    // The text's advance, with the two pixels Fusion itself adds to the ink.
    const int width = group->fontMetrics.size(Qt::TextShowMnemonic, group->text).width() + 2;
    if (rect.width() >= width)
        return rect;
    if (group->direction == Qt::RightToLeft)
        rect.setLeft(rect.right() + 1 - width);
    else
        rect.setWidth(width);
    return rect;
}
