#pragma once

#include "Row.h"

#include <vector>

namespace bench
{

using RowList = std::vector<Row>;

// Each adds the rows of one subject.

void addHostFunctionRows(RowList& rows);
void addUserTypeRows(RowList& rows);
void addScriptCallRows(RowList& rows);
void addGlobalRows(RowList& rows);
void addReferenceRows(RowList& rows);
void addExecuteRows(RowList& rows);
void addCallingBackRows(RowList& rows);
void addScriptValueRows(RowList& rows);
void addCompileRows(RowList& rows);
void addDocumentRows(RowList& rows);
void addEnvironmentRows(RowList& rows);

} // namespace bench
