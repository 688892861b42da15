#include "Quillmoor/InstrumentChoice.h"

#include <QHash>

namespace {

const QLatin1String Instruction("instrument ");

QHash<QString, int> indexByLowerName(const QStringList &names)
{
    QHash<QString, int> indices;
    for (int i = names.size() - 1; i >= 0; --i)
        indices.insert(names.at(i).toLower(), i); // the first of equal names stays
    return indices;
}

} // namespace

int chooseInstrument(const QStringList &instructions, const QStringList &names, int startIndex)
{
    const QHash<QString, int> indices = indexByLowerName(names);
    int chosen = startIndex;
    for (const QString &value : instructions) {
        if (value.startsWith(Instruction, Qt::CaseInsensitive))
            chosen = indices.value(value.mid(Instruction.size()).toLower(), chosen);
    }
    return chosen;
}
