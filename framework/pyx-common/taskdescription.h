#pragma once

#include "pyx_common_export.h"

#include <QMetaType>
#include <QString>

class PYX_COMMON_EXPORT TaskDescription
{
public:
    enum TaskStatus { Pending = 0, Error = 1, Success = 2, Warning = 3 };

    void setDescription(const QString &description) { m_description = description; }
    void setStatus(const TaskStatus &status) { m_status = status; }
    void setMessage(const QString &message) { m_message = message; }

    QString description() const { return m_description; }
    TaskStatus status() const { return m_status; }
    QString message() const { return m_message; }

private:
    QString m_description;
    TaskStatus m_status = Pending;
    QString m_message;
};

Q_DECLARE_METATYPE(TaskDescription)
