// What a report reads beside its document.
#ifndef APP_REPORT_REPORT_FILES_H_
#define APP_REPORT_REPORT_FILES_H_

#include <string>

#include "app/table/csv_row.h"
#include "tools/base/document_source.h"
#include "tools/report/report_data.h"

namespace svmscore::app {

// The name, size and checksum of the bytes in the file of the model; of a pipe, those of the
// document that came through it. [one thread] for each source. Fails: as the source;
// std::bad_alloc.
tools::ModelFileFacts FactsOf(const std::string& path, tools::DocumentSource& source);

// Reads a table of any size and draws at most so many rows of it. [any thread] Fails: as ReadRows.
tools::DrawnTable DrawRows(const std::string& path, const RowForm& form, std::size_t most);

}  // namespace svmscore::app

#endif  // APP_REPORT_REPORT_FILES_H_
