#pragma once

#include <QString>

// Which names the host carries as they are typed. hostnamectl does not refuse a name it dislikes:
// it stores what is left of it and reports success ("my_server" becomes "myserver", "сервер" no
// name at all), and /etc/hosts, the journal and the new directory would then name a host that
// does not exist.
class HostnameRule
{
public:
    // Whether `text` holds a blank or a control character, such as a pasted line feed.
    static bool hasBlankOrControl(const QString &text);
    // Whether systemd keeps `name` unchanged: only ASCII letters, digits, '-' and '.', no empty
    // label, no label that starts or ends with '-', and at most 64 characters in all.
    static bool isKeptAsTyped(const QString &name);
};
