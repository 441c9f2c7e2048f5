#pragma once

#include "device/ports.h"
#include "device/reporter.h"
#include "model/quobrix_document.h"

namespace quobrix {

/// What the flows around the logger work with; all of it outlives them. They run on the document's thread, ask through
/// the prompter and reach the logger through the calls; every failure has been told when one of them returns.
struct FlowContext {
    LoggerCalls& calls;
    Prompter& prompter;
    Settings& settings;
    ProgressReporter& progress;
    LoggerNames names;
    TQuobrixDocument& document;

    Reporter reporter() const { return {calls, prompter, progress}; }
    PortFlows ports() const { return {calls, prompter, settings, names}; }
};

} // namespace quobrix
