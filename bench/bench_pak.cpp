// Reading small files out of a large package, beside two other ways to the same bytes: pread()
// at an offset known beforehand, and a blob out of an SQLite table by its path.

#include "Quillmoor/PakReader.h"
#include "Quillmoor/PakWriter.h"

#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <numeric>
#include <random>
#include <vector>

#ifdef HAVE_SQLITE
#include <sqlite3.h>
#endif

namespace {

constexpr int FileCount = 100000;
constexpr int FileSize = 4096;
constexpr int Lookups = 20000;
constexpr double LimitMicroseconds = 50.0;

QString pathOf(int i)
{
    return QStringLiteral("/sfx/instruments/lute/%1.ogg").arg(i);
}

QByteArray contentsOf(int i)
{
    std::minstd_rand random(static_cast<unsigned>(i) + 1);
    QByteArray bytes(FileSize, Qt::Uninitialized);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() >> 8); });
    return bytes;
}

void check(bool condition, const char *what)
{
    if (!condition)
        throw QString::fromLatin1(what);
}

std::vector<int> randomFiles(int count)
{
    std::vector<int> files(static_cast<size_t>(Lookups));
    std::minstd_rand random(7);
    std::generate(files.begin(), files.end(),
                  [&] { return static_cast<int>(random() % static_cast<unsigned>(count)); });
    return files;
}

using Clock = std::chrono::steady_clock;

double microsecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

/// Runs `read` for random files twice, and prints the times of the second, warm round.
template <typename Read> double measure(const char *what, int fileCount, Read read)
{
    const std::vector<int> files = randomFiles(fileCount);
    for (const int file : files)
        read(file);
    std::vector<double> times;
    times.reserve(files.size());
    for (const int file : files) {
        const auto start = Clock::now();
        const bool isRight = read(file);
        times.push_back(microsecondsSince(start));
        check(isRight, "not the file that was asked for");
    }
    std::sort(times.begin(), times.end());
    const double median = times.at(times.size() / 2);
    std::printf("%-44s %9.2f %9.2f\n", what, median, times.at(times.size() * 99 / 100));
    return median;
}

long peakMemoryKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void writePackage(const QString &package, int count)
{
    PakWriter writer;
    for (int i = 0; i < count; ++i)
        writer.add(pathOf(i), contentsOf(i));
    writer.save(package);
}

/// In a process of its own, so that the figures are of reading alone.
template <typename Action> void inChild(Action action)
{
    std::fflush(stdout);
    const pid_t child = fork();
    if (child != 0) {
        waitpid(child, nullptr, 0);
        return;
    }
    action();
    std::fflush(stdout);
    _exit(0);
}

void benchPackage(const QString &package, int count)
{
    PakReader reader(package);
    reader.open();
    const long before = peakMemoryKb();
    const QByteArray title = QByteArray("getFile, package of ") + QByteArray::number(count);
    const double median = measure(title.constData(), count, [&](int i) {
        return reader.getFile(pathOf(i)).size() == FileSize;
    });
    measure("hasFile", count, [&](int i) { return reader.hasFile(pathOf(i)); });
    std::printf("%-44s %9ld kB\n", "  memory grown meanwhile", peakMemoryKb() - before);
    std::printf("%-44s %9.2f   (%s)\n", "  limit of the median", LimitMicroseconds,
                median < LimitMicroseconds ? "kept" : "EXCEEDED");
}

void benchPread(const QString &fileName)
{
    const int file = ::open(qPrintable(fileName), O_RDONLY | O_CLOEXEC);
    measure("pread at a known offset", FileCount, [&](int i) {
        std::vector<char> bytes(FileSize);
        return ::pread(file, bytes.data(), bytes.size(), off_t{i} * FileSize) == FileSize;
    });
    ::close(file);
}

void writePlain(const QString &fileName)
{
    QFile file(fileName);
    check(file.open(QIODevice::WriteOnly), "cannot write");
    for (int i = 0; i < FileCount; ++i)
        file.write(contentsOf(i));
}

#ifdef HAVE_SQLITE

void bindPath(sqlite3_stmt *statement, const QByteArray &path)
{
    sqlite3_bind_text(statement, 1, path.constData(), path.size(), SQLITE_TRANSIENT);
}

void fillTable(sqlite3 *database)
{
    sqlite3_exec(database, "create table f(path text primary key, data blob) without rowid",
                 nullptr, nullptr, nullptr);
    sqlite3_exec(database, "begin", nullptr, nullptr, nullptr);
    sqlite3_stmt *insert = nullptr;
    sqlite3_prepare_v2(database, "insert into f values(?, ?)", -1, &insert, nullptr);
    for (int i = 0; i < FileCount; ++i) {
        const QByteArray contents = contentsOf(i);
        bindPath(insert, pathOf(i).toUtf8());
        sqlite3_bind_blob(insert, 2, contents.constData(), contents.size(), SQLITE_TRANSIENT);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(database, "commit", nullptr, nullptr, nullptr);
}

void benchSqlite(const QString &fileName)
{
    sqlite3 *database = nullptr;
    check(sqlite3_open(qPrintable(fileName), &database) == SQLITE_OK, "cannot open");
    fillTable(database);
    sqlite3_stmt *select = nullptr;
    sqlite3_prepare_v2(database, "select data from f where path = ?", -1, &select, nullptr);
    measure("SQLite, blob by path", FileCount, [&](int i) {
        bindPath(select, pathOf(i).toUtf8());
        sqlite3_step(select);
        const QByteArray bytes(static_cast<const char *>(sqlite3_column_blob(select, 0)),
                               sqlite3_column_bytes(select, 0));
        sqlite3_reset(select);
        return bytes.size() == FileSize;
    });
    sqlite3_finalize(select);
    sqlite3_close(database);
}

#endif

void run(const QTemporaryDir &dir)
{
    const QString large = dir.filePath(QStringLiteral("large.pak"));
    const QString small = dir.filePath(QStringLiteral("small.pak"));
    inChild([&] {
        writePackage(small, FileCount / 100);
        const auto start = Clock::now();
        writePackage(large, FileCount);
        std::printf("package of %d files of %d bytes: %.0f MB, made in %.1f s\n\n", FileCount,
                    FileSize, double(QFile(large).size()) / 1e6, microsecondsSince(start) / 1e6);
    });
    std::printf("%-44s %9s %9s\n", "warm, microseconds", "median", "99 %");
    inChild([&] { benchPackage(large, FileCount); });
    inChild([&] { benchPackage(small, FileCount / 100); });
    const QString plain = dir.filePath(QStringLiteral("plain.bin"));
    writePlain(plain);
    benchPread(plain);
#ifdef HAVE_SQLITE
    benchSqlite(dir.filePath(QStringLiteral("files.sqlite")));
#endif
}

} // namespace

int main()
{
    try {
        const QTemporaryDir dir;
        run(dir);
        return 0;
    } catch (const QString &message) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        return 1;
    }
}
