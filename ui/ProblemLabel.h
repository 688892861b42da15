#pragma once

#include "ui/tracks/ElidedLabel.h"

/// Says in the status bar what is wrong, in one line that leaves room for other messages. Without
/// a problem it takes no place.
class ProblemLabel : public ElidedLabel {
    Q_OBJECT

public:
    explicit ProblemLabel(QWidget *parent);

    void setProblem(const QString &problem);

    QSize sizeHint() const override;
};
