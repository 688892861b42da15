// A program with settings, which does what it is told line by line on its standard input: a JSON
// array of the command's name and its arguments. It answers each with a line.

#include "model/Settings.h"

#include "support/SizeLimit.h"

#include <QColor>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace {

Settings &settings()
{
    return Settings::instance();
}

Settings::Setting settingOf(const QJsonArray &command)
{
    return static_cast<Settings::Setting>(command.at(1).toInt());
}

QVariant valueOf(const QJsonValue &json)
{
    const QVariant value = json.toVariant();
    return json.isDouble() ? QVariant(json.toInt()) : value;
}

QByteArray described(const QVariant &value)
{
    const QString text = value.type() == QVariant::Color
        ? value.value<QColor>().name(QColor::HexArgb)
        : value.toString();
    return QByteArray(value.typeName()) + ' ' + text.toUtf8();
}

QByteArray value(const QJsonArray &command)
{
    if (command.size() < 3)
        return described(settings().value(settingOf(command)));
    return described(settings().value(settingOf(command), valueOf(command.at(2))));
}

QByteArray contains(const QJsonArray &command)
{
    return settings().contains(settingOf(command)) ? "true" : "false";
}

QByteArray set(const QJsonArray &command)
{
    settings().setValue(settingOf(command), valueOf(command.at(2)));
    return "done";
}

QByteArray setColor(const QJsonArray &command)
{
    settings().setValue(settingOf(command), QColor(command.at(2).toString()));
    return "done";
}

QByteArray sync(const QJsonArray &)
{
    settings().sync();
    return "done";
}

QByteArray runEvents(const QJsonArray &)
{
    QCoreApplication::processEvents();
    return "done";
}

QByteArray limitFiles(const QJsonArray &command)
{
    static std::unique_ptr<SizeLimit> limit;
    limit.reset();
    if (command.size() > 1)
        limit = std::make_unique<SizeLimit>(static_cast<rlim_t>(command.at(1).toInt()));
    return "done";
}

/// Sets the settings from the first number to the second in turn, so many times in all, each time
/// with a sync. Answers how often a value that was set before was there no more.
QByteArray work(const QJsonArray &command)
{
    const int first = command.at(1).toInt();
    const int count = command.at(2).toInt() - first + 1;
    QVector<int> expected(count, 0);
    int lost = 0;
    for (int i = 0; i < command.at(3).toInt(); ++i) {
        // Always three digits: the file keeps its size.
        expected[i % count] = 100 + i % 900;
        settings().setValue(static_cast<Settings::Setting>(first + i % count), expected[i % count]);
        settings().sync();
        settings().sync();
        for (int k = 0; k < qMin(i + 1, count); ++k)
            lost += settings().value(static_cast<Settings::Setting>(first + k)) != expected[k];
    }
    return QByteArray::number(lost);
}

QByteArray leave(const QJsonArray &)
{
    std::exit(0);
}

using Command = std::function<QByteArray(const QJsonArray &)>;

const QHash<QString, Command> &commands()
{
    static const QHash<QString, Command> table = {
        {QStringLiteral("value"), value},
        {QStringLiteral("contains"), contains},
        {QStringLiteral("set"), set},
        {QStringLiteral("setColor"), setColor},
        {QStringLiteral("sync"), sync},
        {QStringLiteral("runEvents"), runEvents},
        {QStringLiteral("limitFiles"), limitFiles},
        {QStringLiteral("work"), work},
        {QStringLiteral("exit"), leave},
    };
    return table;
}

QByteArray answer(const QJsonArray &command)
{
    try {
        return commands().value(command.at(0).toString())(command);
    } catch (const QString &message) {
        return "thrown: " + message.toUtf8();
    }
}

void obey()
{
    for (std::string line; std::getline(std::cin, line);) {
        const QJsonArray command = QJsonDocument::fromJson(QByteArray::fromStdString(line)).array();
        std::cout << answer(command).constData() << std::endl;
    }
}

} // namespace

/// Options: "without-application" does what it says, "from-thread" makes a thread the first user.
int main(int argc, char **argv)
{
    const QByteArray option(argc > 1 ? argv[1] : "");
    std::optional<QCoreApplication> application;
    if (option != "without-application")
        application.emplace(argc, argv);
    QCoreApplication::setOrganizationDomain(QStringLiteral("composer.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillmoor Composer"));
    Settings::registerFormat();
    if (option == "from-thread")
        std::thread([] { settings().contains(Settings::RootPath); }).join();
    obey();
    return 0;
}
