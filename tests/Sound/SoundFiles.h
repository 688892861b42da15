#pragma once

#include <QByteArray>

#include <vector>

/// Sound files made and read by libsndfile itself, for tests.
namespace SoundFiles {

/// A whole file in memory; `format` as SF_FORMAT_..., samples interleaved.
QByteArray encode(int format, int rate, int channels, const std::vector<float> &samples);
QByteArray encode16(int rate, int channels, const std::vector<short> &samples);

struct Contents {
    bool isValid = false;
    int format = 0;
    int rate = 0;
    int channels = 0;
    qint64 frames = 0;          ///< as announced by the header
    std::vector<short> samples; ///< interleaved, as they are in the file
};
Contents read(const QString &fileName);

} // namespace SoundFiles
