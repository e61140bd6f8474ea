#pragma once

class QAccessibleEvent;

// Qt 5's line edit tells accessibility clients every piece of text typed into, deleted from or
// set in it, in clear also in a password field, whose text it otherwise keeps from them; the
// AT-SPI bridge hands such a change to every client on the session bus. Standing in front of the
// bridge, the mask passes a change of a password field on as the screen shows it: each character
// replaced by the field's mask character, or nothing at all where the field shows nothing.
class PasswordTextMask
{
public:
    // Once per process; a handler installed before goes on receiving every change, masked.
    static void install();

private:
    static void filter(QAccessibleEvent *event);
    static void forward(QAccessibleEvent *event);
};
