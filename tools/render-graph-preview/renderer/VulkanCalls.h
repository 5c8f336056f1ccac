#pragma once

#include <QString>

#include <new>

#include <vulkan/vulkan_raii.hpp>

// Runs Vulkan calls. Their exceptions end here, as an error of one line.
template<typename Action>
bool runVulkan(QString &error, const Action &action)
{
    try {
        action();
        return true;
    } catch (const vk::DeviceLostError &) {
        error = QStringLiteral("the Vulkan device was lost: start again, or choose another one");
    } catch (const vk::OutOfDeviceMemoryError &) {
        error = QStringLiteral(
                "the Vulkan device has not enough memory: choose a smaller size or source");
    } catch (const vk::OutOfHostMemoryError &) {
        error = QStringLiteral("not enough memory: choose a smaller size or source");
    } catch (const std::bad_alloc &) {
        error = QStringLiteral("not enough memory: choose a smaller size or source");
    } catch (const std::exception &exception) {
        error = QStringLiteral("Vulkan: ") + QString::fromLocal8Bit(exception.what());
    }
    return false;
}
