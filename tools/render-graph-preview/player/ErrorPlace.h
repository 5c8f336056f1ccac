#pragma once

#include <PresetParameters.h>

#include <QList>
#include <QString>

// What the tool's line about a component or a .glslp file leaves open: "<file>:<line>: <what>", in
// the words of cmake/DescribeComponentError.cmake. Empty where it leaves nothing open. Takes the
// line without the tool's name, the component that it is about, and the preset's own file and
// parameters.
QString errorPlace(const QString &error, const QString &slangPath, const QString &glslpPath,
                   const QList<PresetParamMeta> &parameters);
