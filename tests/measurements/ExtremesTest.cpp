// The lowest and the highest height among samples of which some are missing, infinite, or too high to be told.
#include <gtest/gtest.h>

#include <common/Extremes.h>
#include <random>
#include <vector>

namespace Qor::Tivor::Testing {

namespace {

template <class T>
void Compare(const std::vector<T>& specials) {
    std::mt19937 random(1);
    for (std::size_t size = 0; size < 200; ++size)
        for (const double scale : {1e-9, -0.25, 0.0, 1e300}) {
            std::vector<T> samples(size);
            double lowest = std::numeric_limits<double>::infinity(), highest = -lowest;
            for (T& sample : samples) {
                sample = random() % 8 == 0 && size % 2 == 1 ? specials[random() % specials.size()]
                                                            : static_cast<T>(static_cast<int>(random() % 2000) - 1000);
                const double height = static_cast<double>(sample) * scale;
                lowest = std::isfinite(height) ? std::min(lowest, height) : lowest;
                highest = std::isfinite(height) ? std::max(highest, height) : highest;
            }
            const auto heights = Measurements::FindHeights(std::span<const T>(samples), scale);
            EXPECT_EQ(heights.lowest, lowest) << typeid(T).name() << ' ' << size << ' ' << scale;
            EXPECT_EQ(heights.highest, highest) << typeid(T).name() << ' ' << size << ' ' << scale;
        }
}

} // namespace

TEST(Extremes, AreOfFiniteHeights) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    Compare<double>({none, infinity, -infinity, 1e20, -1e308});
    Compare<float>({static_cast<float>(none), static_cast<float>(infinity), -static_cast<float>(infinity), 3e38F});
    Compare<short>({32767, -32768});
    Compare<unsigned char>({255, 0});
    Compare<long long>({std::numeric_limits<long long>::max(), std::numeric_limits<long long>::min()});
}

} // namespace Qor::Tivor::Testing
