#pragma once

#include "module.h"
#include "pyx_common_orn_export.h"

class OrnDomainElement;

// The directory-domain module under which directory plug-ins place their modules.
class PYX_COMMON_ORN_EXPORT OrnDomainModule : public Module
{
    Q_OBJECT

public:
    explicit OrnDomainModule(QObject *parent);

    OrnDomainElement *domainElement() const { return m_element; }

private:
    OrnDomainElement *m_element;
};
