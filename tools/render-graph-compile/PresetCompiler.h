#pragma once

#include "PresetDeclarations.h"

#include <VulkanRenderGraph.h>

#include <QString>
#include <QStringList>

// Builds `graph` from the preset's declaration and its components' sources below `shadersDir`,
// with the HDR colour boost pass at its end. The previous content of `graph` is discarded. The
// first error prints one line on stderr and returns false; `graph` is then incomplete.
bool compilePreset(const QString &shadersDir, const FirstPartyPresetSource::PresetDecl &decl,
                   VulkanRenderGraph &graph);

// The component's parameters that take a slot, in the order of their directives.
QStringList slotParameterIds(const QString &slangPath);
