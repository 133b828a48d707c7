// The verification records of a document whose scores change.
#ifndef TOOLS_CALIBRATE_RECORDS_H_
#define TOOLS_CALIBRATE_RECORDS_H_

#include <functional>
#include <string>

#include "host/load/loader.h"
#include "tools/calibrate/calibration.h"

namespace svmscore::tools {

// Loads a document from its bytes.
using LoadText = std::function<LoadedModel(const std::string& document)>;

// Makes the records of `document` agree with what it scores now. `before` is the model as it was,
// with the records of the document: they stay where they agree still, and are made anew, from their
// own cases, where they agreed before; else they are dropped. Throws SSException where the
// document cannot be loaded, and a BadDocument where records are in an entity. [one thread]
RecordsFate UpdateRecords(const LoadedModel& before, const LoadText& load, const std::string& name,
                          std::string& document);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_RECORDS_H_
