#include "Formats.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace VulkanGraph {

namespace {

// In the enumerators' order.
constexpr std::array<FormatTraits, 4> kFormats = {{
        {VK_FORMAT_B10G11R11_UFLOAT_PACK32, 4},
        {VK_FORMAT_R16G16B16A16_SFLOAT, 8},
        {VK_FORMAT_R8G8B8A8_UNORM, 4},
        {VK_FORMAT_R32G32B32A32_SFLOAT, 16},
}};

// What the values of an application's image are.
enum class Values : std::uint8_t { Float, Unorm, Srgb };
struct ApplicationFormat
{
    VkFormat format;
    Values values;
};
constexpr ApplicationFormat kApplicationFormats[] = {
        {VK_FORMAT_R4G4B4A4_UNORM_PACK16, Values::Unorm},
        {VK_FORMAT_B4G4R4A4_UNORM_PACK16, Values::Unorm},
        {VK_FORMAT_R5G6B5_UNORM_PACK16, Values::Unorm},
        {VK_FORMAT_B5G6R5_UNORM_PACK16, Values::Unorm},
        {VK_FORMAT_R5G5B5A1_UNORM_PACK16, Values::Unorm},
        {VK_FORMAT_B5G5R5A1_UNORM_PACK16, Values::Unorm},
        {VK_FORMAT_A1R5G5B5_UNORM_PACK16, Values::Unorm},
        {VK_FORMAT_R8G8B8_UNORM, Values::Unorm},
        {VK_FORMAT_R8G8B8_SRGB, Values::Srgb},
        {VK_FORMAT_B8G8R8_UNORM, Values::Unorm},
        {VK_FORMAT_B8G8R8_SRGB, Values::Srgb},
        {VK_FORMAT_R8G8B8A8_UNORM, Values::Unorm},
        {VK_FORMAT_R8G8B8A8_SRGB, Values::Srgb},
        {VK_FORMAT_B8G8R8A8_UNORM, Values::Unorm},
        {VK_FORMAT_B8G8R8A8_SRGB, Values::Srgb},
        {VK_FORMAT_A8B8G8R8_UNORM_PACK32, Values::Unorm},
        {VK_FORMAT_A8B8G8R8_SRGB_PACK32, Values::Srgb},
        {VK_FORMAT_A2R10G10B10_UNORM_PACK32, Values::Unorm},
        {VK_FORMAT_A2B10G10R10_UNORM_PACK32, Values::Unorm},
        {VK_FORMAT_R16G16B16A16_UNORM, Values::Unorm},
        {VK_FORMAT_R16G16B16A16_SFLOAT, Values::Float},
        {VK_FORMAT_R32G32B32A32_SFLOAT, Values::Float},
        {VK_FORMAT_B10G11R11_UFLOAT_PACK32, Values::Float},
};

const ApplicationFormat *find(VkFormat format)
{
    const auto *const found = std::find_if(
            std::begin(kApplicationFormats), std::end(kApplicationFormats),
            [format](const ApplicationFormat &known) { return known.format == format; });
    return found == std::end(kApplicationFormats) ? nullptr : found;
}

} // namespace

const FormatTraits &traitsOf(VulkanRenderGraph::Format format)
{
    return kFormats[std::size_t(format)];
}

bool checkApplicationFormat(const Context &context, const QString &what, VkFormat format,
                            VkFormatFeatureFlags features, QString &error)
{
    const ApplicationFormat *const known = find(format);
    const char *problem = nullptr;
    if (known == nullptr)
        problem = "is not one of colours as UNORM or float";
    else if (known->values == Values::Srgb)
        problem = "is an _SRGB one: take the UNORM one, since the values are gamma-encoded already";
    else if (!context.supports(format, features))
        problem = "is not supported by this device";
    if (problem == nullptr)
        return true;
    error = "the %1's format (VkFormat %2) %3"_L1.arg(what, QString::number(int(format)),
                                                      QLatin1StringView(problem));
    return false;
}

bool isFloatFormat(VkFormat format)
{
    const ApplicationFormat *const known = find(format);
    return known != nullptr && known->values == Values::Float;
}

} // namespace VulkanGraph
