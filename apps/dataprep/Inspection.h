#pragma once

#include "Fields.h"
#include "Output.h"

#include <QString>

namespace dataprep {

/// What `inspect` found in one file: the kind, which is also the JSON key
/// of the fields ("timeMarks", "ct", "ctg", "trajectory", "info", "strip",
/// "integrationTime", "tdi"), the fields, and the findings.
struct Inspection {
    QString kind;
    /// For people: "time-mark file", "CT file", ...
    QString title;
    Fields fields;
    Messages messages;
};

} // namespace dataprep
