// Work over many files on several threads, printed as if it had run one file after another.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <tqSystem/tqLog.h>

struct BatchSettings {
    unsigned jobs = 1;
    bool verbose = false;
};

// What one job prints, held back until every job before it has been printed.
struct JobReport {
    std::string out;  // for standard output
    std::string err;  // for standard error
};

// Runs work(i, report) for every i below labels.size() on up to settings.jobs threads. Reports
// are printed in index order whatever order the jobs finish in. On a terminal, standard error
// shows a progress bar; otherwise --verbose prints "[i/n] label" before each report. Returns
// the number of jobs that returned false or threw.
std::size_t RunBatch(const std::vector<std::string>& labels, const BatchSettings& settings,
                     const std::function<bool(std::size_t, JobReport&)>& work);

// The library's log: inside a batch job its lines join that job's report (prefixed with the
// job's label) so that they keep their place; elsewhere they go to standard error.
class ReportingLog : public tqLog {
public:
    void write(const tqLogObject& object) override;
};
