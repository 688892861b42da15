#pragma once

#include <QString>
#include <QVariant>

#include <functional>

class ColorWidget;
class QCheckBox;
class QLineEdit;

/// What binds a widget of the preferences to its setting. The widgets belong to the form.
class Preference {
public:
    enum Kind { Directory = 0, CheckBox = 1, Color = 2 };

    virtual ~Preference() = default;
    Q_DISABLE_COPY(Preference)

    Kind kind() const { return m_kind; }
    /// Whether the setting is read at the program's start only.
    bool isRestartRequired() const { return m_isRestartRequired; }

    /// Shows the value of the setting in the widget.
    virtual void load(const QVariant &value) = 0;

protected:
    Preference(Kind kind, bool isRestartRequired)
        : m_kind(kind)
        , m_isRestartRequired(isRestartRequired)
    {
    }

private:
    Kind m_kind;
    bool m_isRestartRequired;
};

class DirectoryPreference : public Preference {
public:
    /// Whether a path may be chosen; any may when there is no such function.
    using Test = std::function<bool(const QString &)>;

    DirectoryPreference(QLineEdit *pathEdit, bool isRestartRequired)
        : Preference(Directory, isRestartRequired)
        , edit(pathEdit)
    {
    }

    void load(const QVariant &value) override;
    bool accepts(const QString &path) const { return !test || test(path); }

    QLineEdit *const edit;
    QString caption; ///< of the dialog in which it is chosen
    Test test;
    QString error; ///< shown when the test fails
};

class CheckBoxPreference : public Preference {
public:
    CheckBoxPreference(QCheckBox *checkBox, bool isRestartRequired)
        : Preference(CheckBox, isRestartRequired)
        , box(checkBox)
    {
    }

    void load(const QVariant &value) override;

    QCheckBox *const box;
};

class ColorPreference : public Preference {
public:
    ColorPreference(ColorWidget *colorWidget, bool isRestartRequired)
        : Preference(Color, isRestartRequired)
        , swatch(colorWidget)
    {
    }

    void load(const QVariant &value) override;

    ColorWidget *const swatch;
    QString title; ///< of the dialog in which it is picked
};
