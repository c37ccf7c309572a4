#pragma once

#include <array>
#include <vector>

namespace tavrel::erase {

using Color = std::array<float, 3>; ///< R, G, B of 0 to 255

/// A Gaussian mixture of colours with diagonal covariance.
class ColorMixture final
{
public:
    /// Fits 1 to 5 components, one for every 24 samples. Without samples a broad one around grey.
    [[nodiscard]] static ColorMixture fit(std::vector<Color> samples);

    /// How unlikely a colour is: the negative natural logarithm of its density.
    [[nodiscard]] double negativeLogLikelihood(const Color &color) const;
    [[nodiscard]] int componentCount() const { return static_cast<int>(m_components.size()); }

private:
    struct Component
    {
        double logWeight = 0;
        std::array<double, 3> mean{};
        std::array<double, 3> variance{};
        double constant = 0; ///< logWeight less all that does not depend on the colour

        void prepare();
    };
    std::vector<Component> m_components;
};

} // namespace tavrel::erase
