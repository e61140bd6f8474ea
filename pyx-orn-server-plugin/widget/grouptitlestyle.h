#pragma once

#include <QProxyStyle>

// Gives a group box's title the width of its text. Fusion measures the title's ink, which can end
// short of the last letter's advance, and clips the title there, cutting off that letter.
class GroupTitleStyle : public QProxyStyle
{
public:
    // Over a style of the application's kind, which the proxy owns.
    GroupTitleStyle();

    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                         SubControl subControl, const QWidget *widget) const override;
};
