#include "annotate/erase_color_mixture.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace tavrel::erase {
namespace {

constexpr int kSamplesPerComponent = 24;
constexpr int kMostComponents = 5;
constexpr int kRounds = 6;
constexpr std::size_t kLeastSamples = 3;
constexpr double kLeastVariance = 9.0;
constexpr double kBroadVariance = 4000.0;
constexpr double kGrey = 128.0;

float luma(const Color &color)
{
    return 0.299F * color[0] + 0.587F * color[1] + 0.114F * color[2];
}

double squaredDistance(const Color &a, const std::array<double, 3> &b)
{
    double sum = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const double d = static_cast<double>(a[c]) - b[c];
        sum += d * d;
    }
    return sum;
}

/// Sums over the samples of one component.
struct Cluster
{
    std::array<double, 3> sum{};
    std::array<double, 3> squares{};
    std::size_t count = 0;
};

using Centers = std::vector<std::array<double, 3>>;

std::vector<Cluster> assign(const std::vector<Color> &samples, const Centers &centers)
{
    std::vector<Cluster> clusters(centers.size());
    for (const Color &sample : samples) {
        std::size_t nearest = 0;
        double least = std::numeric_limits<double>::max();
        for (std::size_t k = 0; k < centers.size(); ++k) {
            const double far = squaredDistance(sample, centers[k]);
            if (far < least) {
                least = far;
                nearest = k;
            }
        }
        Cluster &cluster = clusters[nearest];
        ++cluster.count;
        for (std::size_t c = 0; c < 3; ++c) {
            const auto value = static_cast<double>(sample[c]);
            cluster.sum[c] += value;
            cluster.squares[c] += value * value;
        }
    }
    return clusters;
}

} // namespace

void ColorMixture::Component::prepare()
{
    constant = logWeight;
    for (const double spread : variance)
        constant -= 0.5 * std::log(2 * std::numbers::pi * spread);
}

ColorMixture ColorMixture::fit(std::vector<Color> samples)
{
    ColorMixture mixture;
    const std::size_t n = samples.size();
    if (n == 0) {
        Component grey;
        grey.mean.fill(kGrey);
        grey.variance.fill(kBroadVariance);
        grey.prepare();
        mixture.m_components.push_back(grey);
        return mixture;
    }
    std::stable_sort(samples.begin(), samples.end(), [](const Color &a, const Color &b) { return luma(a) < luma(b); });
    const std::size_t k = std::clamp<std::size_t>(n / kSamplesPerComponent, 1, kMostComponents);
    Centers centers(k);
    for (std::size_t c = 0; c < k; ++c) {
        const auto seed =
            static_cast<std::size_t>((static_cast<double>(c) + 0.5) * static_cast<double>(n) / static_cast<double>(k));
        std::copy_n(samples[std::min(seed, n - 1)].begin(), 3, centers[c].begin());
    }
    std::vector<Cluster> clusters;
    for (int round = 0; round < kRounds; ++round) {
        clusters = assign(samples, centers);
        for (std::size_t c = 0; c < k; ++c) {
            if (clusters[c].count == 0)
                continue;
            for (std::size_t i = 0; i < 3; ++i)
                centers[c][i] = clusters[c].sum[i] / static_cast<double>(clusters[c].count);
        }
    }
    for (std::size_t c = 0; c < k; ++c) {
        Component component;
        component.mean = centers[c];
        if (const auto count = static_cast<double>(clusters[c].count); clusters[c].count >= kLeastSamples) {
            component.logWeight = std::log(count / static_cast<double>(n));
            for (std::size_t i = 0; i < 3; ++i) {
                const double mean = clusters[c].sum[i] / count;
                component.variance[i] = std::max(kLeastVariance, clusters[c].squares[i] / count - mean * mean);
            }
        } else {
            component.logWeight = std::log(1.0 / static_cast<double>(n + 1));
            component.variance.fill(kBroadVariance);
        }
        component.prepare();
        mixture.m_components.push_back(component);
    }
    return mixture;
}

double ColorMixture::negativeLogLikelihood(const Color &color) const
{
    std::array<double, kMostComponents> logs{};
    double highest = std::numeric_limits<double>::lowest();
    for (std::size_t k = 0; k < m_components.size(); ++k) {
        const Component &component = m_components[k];
        double value = component.constant;
        for (std::size_t c = 0; c < 3; ++c) {
            const double d = static_cast<double>(color[c]) - component.mean[c];
            value -= 0.5 * d * d / component.variance[c];
        }
        logs[k] = value;
        highest = std::max(highest, value);
    }
    double sum = 0;
    for (std::size_t k = 0; k < m_components.size(); ++k)
        sum += std::exp(logs[k] - highest);
    return -(highest + std::log(sum));
}

} // namespace tavrel::erase
