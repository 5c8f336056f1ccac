#pragma once

#include "PresetDeclarations.h"

#include <VulkanRenderGraph.h>

#include <QString>
#include <QStringList>

// Builds `graph` from the preset's declaration and its components' sources below `shadersDir`,
// closed by the HDR colour boost pass. Whatever `graph` held before is discarded. At the first
// error prints one line on stderr and returns false; `graph` is then unfinished.
bool compilePreset(const QString &shadersDir, const FirstPartyPresetSource::PresetDecl &decl,
                   VulkanRenderGraph &graph);

// The component's parameters that take a slot, in the order of their directives.
QStringList slotParameterIds(const QString &slangPath);
