#pragma once

#include <PresetParameters.h>

#include <QList>
#include <QString>

// Finds the place in the sources that an error of the preset compiler is about, if the error does
// not name it. `error` is without the program's name. `slangPath` is the component that failed;
// `glslpPath` and `parameters` are the preset's. Returns "<file>:<line>: <text>", or an empty text
// if there is nothing to add. cmake/DescribeComponentError.cmake writes the same texts.
QString errorPlace(const QString &error, const QString &slangPath, const QString &glslpPath,
                   const QList<PresetParamMeta> &parameters);
