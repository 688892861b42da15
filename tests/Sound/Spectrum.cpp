#include "Spectrum.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double WindowBeta = 20.0; // of a Kaiser window
constexpr double MainLobeBins = 9.0;

using Complex = std::complex<double>;

double bessel0(double x)
{
    double sum = 1.0;
    double term = 1.0;
    for (int k = 1; term > sum * 1e-17; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

void transform(std::vector<Complex> &values)
{
    const std::size_t size = values.size();
    for (std::size_t i = 1, j = 0; i < size; ++i) {
        std::size_t bit = size >> 1;
        for (; (j & bit) != 0; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(values[i], values[j]);
    }
    for (std::size_t length = 2; length <= size; length *= 2) {
        std::vector<Complex> turns(length / 2);
        for (std::size_t k = 0; k < turns.size(); ++k)
            turns[k] =
                std::polar(1.0, -2 * Pi * static_cast<double>(k) / static_cast<double>(length));
        for (std::size_t start = 0; start < size; start += length) {
            for (std::size_t k = 0; k < length / 2; ++k) {
                const Complex even = values[start + k];
                const Complex odd = values[start + k + length / 2] * turns[k];
                values[start + k] = even + odd;
                values[start + k + length / 2] = even - odd;
            }
        }
    }
}

double decibels(double amplitude)
{
    return 20 * std::log10(std::max(amplitude, 1e-12));
}

} // namespace

Spectrum::Spectrum(const float *samples, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i) {
        const double x = 2 * static_cast<double>(i) / static_cast<double>(size - 1) - 1;
        const double window = bessel0(WindowBeta * std::sqrt(std::max(0.0, 1 - x * x)));
        m_windowSum += window;
        m_windowed.push_back(static_cast<double>(samples[i]) * window);
    }
    std::vector<Complex> values(m_windowed.begin(), m_windowed.end());
    transform(values);
    for (std::size_t bin = 0; bin <= size / 2; ++bin)
        m_amplitudes.push_back(2 * std::abs(values[bin]) / m_windowSum);
}

double Spectrum::strongest(double except) const
{
    const double size = 2 * static_cast<double>(m_amplitudes.size() - 1);
    double worst = 0;
    for (std::size_t bin = 0; bin < m_amplitudes.size(); ++bin) {
        if (except < 0 || std::abs(static_cast<double>(bin) - except * size) > MainLobeBins)
            worst = std::max(worst, m_amplitudes[bin]);
    }
    return decibels(worst);
}

double Spectrum::at(double frequency) const
{
    Complex sum;
    for (std::size_t i = 0; i < m_windowed.size(); ++i)
        sum += std::polar(m_windowed[i], -2 * Pi * frequency * static_cast<double>(i));
    return decibels(2 * std::abs(sum) / m_windowSum);
}
