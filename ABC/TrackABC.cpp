#include "ABC/ABCGenerator.h"
#include "model/Track.h"

QString Track::abc()
{
    if (m_abc.isEmpty()) {
        try {
            m_abc = ABCGenerator().generate(*this);
        } catch (const QString &) {
            m_abc.clear();
        }
    }
    return m_abc;
}
