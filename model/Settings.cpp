#include "model/Settings.h"

#include <QColor>

Settings::Settings() = default;

void Settings::registerFormat() { }

Settings &Settings::instance()
{
    static Settings settings;
    return settings;
}

QVariant Settings::defaultValue(Setting setting)
{
    return setting >= MergeChannels && setting <= PitchBend ? QVariant(true) : QVariant(0);
}

QVariant Settings::value(Setting setting) const
{
    return defaultValue(setting);
}

QVariant Settings::value(Setting setting, const QVariant &fallback) const
{
    Q_UNUSED(setting)
    return fallback;
}

bool Settings::contains(Setting setting) const
{
    Q_UNUSED(setting)
    return false;
}

void Settings::setValue(Setting setting, const QVariant &value)
{
    emit settingChanged(setting, value);
}

void Settings::sync() { }
