#include "ui/ProblemLabel.h"

namespace {

constexpr int WidestCharacters = 48;

} // namespace

ProblemLabel::ProblemLabel(QWidget *parent)
    : ElidedLabel(parent)
{
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    hide();
}

void ProblemLabel::setProblem(const QString &problem)
{
    setText(problem);
    setVisible(!problem.isEmpty());
    updateGeometry();
}

QSize ProblemLabel::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const int widest = WidestCharacters * metrics.averageCharWidth();
    const QMargins around = contentsMargins();
    const int needed = metrics.horizontalAdvance(text()) + around.left() + around.right() + 1;
    return {qMin(needed, widest), ElidedLabel::sizeHint().height()};
}
