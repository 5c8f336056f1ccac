#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

// Facts about one shader component's source. Code is read with its comments removed; directives are
// comments and are read from the raw lines. Every function reads the file again. A file that cannot
// be opened yields nothing; the caller decides whether that is an error.

// The path of a component's source, and of the fallback, which is never scanned. The path is
// relative if `shadersDir` is. Neither function accesses the file system.
QString slangComponentPath(const QString &shadersDir, const QString &component);
QString fragComponentPath(const QString &shadersDir, const QString &component);

// The file's lines with every comment removed, untrimmed, in file order; lines that are blank
// without their comments are dropped. A removed comment leaves nothing in its place, quotes do not
// protect comment marks, and block comments do not nest.
QStringList strippedCodeLines(const QString &path);

// Whether the code reads pc.frameCount or pc.frameDirection.
bool sourceUsesFrameCount(const QString &path);

// Every N that the code reads as pc.params[N]. Only literal digits count, and an N beyond int is 0.
QSet<int> usedParamSlotIndices(const QString &path);

// The names of the `//! input` and `//! param` lines, each once, in order of first appearance.
QStringList declaredAliasInputs(const QString &path);
QStringList declaredParameterIds(const QString &path);

// The line, counted from 1, of the first such directive with that name, or of the first code that
// reads that slot; 0 if there is none.
int aliasInputLine(const QString &path, const QString &alias);
int parameterLine(const QString &path, const QString &id);
int paramSlotLine(const QString &path, int index);

// Whether the code reads pc.hdrOutputActive.
bool sourceReadsHdrOutputActive(const QString &path);
