#include "Player.h"

#include <QScopeGuard>

#include <utility>

Player::Player(QString device, OffscreenRenderer::Outputs outputs)
    : m_device(std::move(device)),
      m_outputs(outputs)
{
}

void Player::setPreset(const PresetOnDisk &preset)
{
    m_preset = preset;
    m_hasGraph = false;
    m_state.params = initialValues(m_preset.parameters);
}

void Player::setSource(const SourcePicture &source)
{
    m_source = source;
    m_hasSource = false;
}

void Player::setHeadroom(std::optional<float> headroom)
{
    m_state.hdrOutputActive = headroom.has_value();
    m_state.hdrHeadroom = headroom.value_or(1.0F);
}

void Player::resetHistories()
{
    if (m_renderer)
        m_renderer->resetHistories();
}

bool Player::drawFrame(int number, QString &error)
{
    // The device may be lost, or there was no memory to go on.
    auto failed = qScopeGuard([this] { release(); });
    const bool isDrawn =
            (m_renderer || OffscreenRenderer::create(m_device, m_outputs, m_renderer, error))
            && prepareFrame(number, error) && m_renderer->drawFrame(m_state, error);
    if (isDrawn)
        failed.dismiss();
    return isDrawn;
}

bool Player::recordFrame(const std::shared_ptr<VulkanDevice> &device, VkCommandBuffer commands,
                         int submission, int number, QString &error)
{
    auto failed = qScopeGuard([this] { release(); });
    const bool isRecorded =
            (m_renderer || OffscreenRenderer::create(device, m_outputs, m_renderer, error))
            && prepareFrame(number, error)
            && m_renderer->recordFrame(commands, submission, m_state, error);
    if (isRecorded)
        failed.dismiss();
    return isRecorded;
}

void Player::release()
{
    m_renderer.reset();
    m_hasGraph = false;
    m_hasSource = false;
}

bool Player::prepareFrame(int number, QString &error)
{
    if (!m_hasGraph && !m_renderer->setGraph(m_preset.graph, m_preset.modules, error))
        return false;
    m_hasGraph = true;
    if ((!m_hasSource || m_source.isAnimated())
        && !m_renderer->setSource(floatPicture(m_source.frame(number)), error))
        return false;
    m_hasSource = true;
    m_state.frameCount = std::uint32_t(number);
    return true;
}
