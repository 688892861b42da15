#pragma once

#include <QDialog>
#include <QString>

#include <memory>

struct KeyChoice;

namespace Ui {
class KeyDialog;
}

/// Asks for the key that a tune's text shall be written in.
class KeyDialog : public QDialog {
    Q_OBJECT

public:
    explicit KeyDialog(QWidget *parent = nullptr);
    ~KeyDialog() override;

    /// Chooses the mode and the sharps or flats of an ABC key text such as "F#m". Changes nothing
    /// for a text without a key.
    void setKey(const QString &key);

    /// The chosen key as ABC writes it; "C" at first.
    QString key() const;

public slots:
    /// Asks first whether a key is meant that the game does not support; the dialog stays open
    /// when it is not.
    void accept() override;

private slots:
    void updateKey();

private:
    KeyChoice choice() const;
    bool confirmUnsupportedKey();

    std::unique_ptr<Ui::KeyDialog> m_ui;
};
