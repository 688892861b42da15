#pragma once

#include <QByteArray>
#include <QString>

/// The newest version, as the web service describes it.
struct LatestVersion {
    bool isNewer = false; ///< than this program
    QString name;         ///< for showing; may be empty
    QString url;          ///< the address of the download; may be empty or no address at all

    /// The size from which on a reply is not even read, in bytes.
    static constexpr int SizeLimit = 64 * 1024;

    /// Reads the body of the service's reply. Throws a QString when that is not what it sends.
    static LatestVersion read(const QByteArray &reply);
};

/// A version as one number, of which the greater is the newer. The web service counts on it as it
/// is: `minor` and `patch` have 8 bits each before they run into the field above, and a negative
/// `build` is greater than any version.
constexpr quint64 packedVersion(int major, int minor, int patch, int build)
{
    return quint64{quint32(major)} << 48 | quint64{quint32(minor)} << 40
        | quint64{quint32(patch)} << 32 | quint64(qint64{build});
}
