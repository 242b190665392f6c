// The files of a run, in the current directory. Each is written as the run goes, so that a run that
// dies leaves what it reached, and never a pass.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/settings.h"
#include "interface/common_runner.h"
#include "platform/output_stream.h"
#include "tests/cpu/temperature_monitor.h"
#include "vorn/vorn.h"

namespace vorn {

inline constexpr const char* reportFileName = "CPUOut.txt";
inline constexpr const char* resultsTextFileName = "CPUResults.txt";
inline constexpr const char* resultsXmlFileName = "CPUResults.xml";
inline constexpr const char* summaryFileName = "CPUSummary.txt";
inline constexpr const char* pendingPassFailFileName = "t_passfail.txt";
inline constexpr const char* passFailFileName = "passfail.txt";

/// One output file. The first open or write that fails is told once on standard error, in one line
/// that names the file; later writes are dropped.
class OutputFile {
public:
    /// Writes through `data`, which must outlive this object.
    explicit OutputFile(TextData& data) : data_(data) {}

    /// Opens a regular file, not through a link.
    void open(const std::string& name, Opening opening);

    /// Appends `text` and hands it to the system. Nothing when the file is not open.
    void write(const std::string& text);

    /// As write(), but the next write begins where this text begins.
    void writeProvisionally(const std::string& text);

    /// Whether the file is open and everything written so far was taken by the system.
    bool isSound() const { return sound_; }

    void close();

private:
    void giveUp(const char* action, const std::string& reason);

    TextData& data_;
    std::string name_;
    bool sound_ = false;
};

/// The records of a run, in the form that "@OutFileFormat" asks for ("TEXT", "XML", else no file).
class ResultsFile {
public:
    enum class Format { none, text, xml };

    ResultsFile(TextData& data, Format format) : file_(data), format_(format) {}

    /// The form that a value of "@OutFileFormat" asks for.
    static Format formatOf(const std::string& outFileFormat);

    Format format() const { return format_; }

    /// Whether the file is open and everything written so far was taken by the system.
    bool isSound() const { return file_.isSound(); }

    /// Opens the file and writes what is known of the run at its start. The XML form is complete
    /// and well-formed from here on, with the verdict "INCOMPLETE" until finish().
    void begin(const std::string& processorLabel, const std::string& startTime);

    /// Adds a test. `processors` names the logical processors on which it began and ended; empty
    /// when they are not tracked.
    void add(const TestOutcome& outcome, const std::string& processors);

    /// Adds a temperature sample. The XML form alone holds them.
    void add(const TemperatureSample& sample);

    /// Ends the file with the run's end: local time, elapsed seconds, "PASSED" or "FAILED".
    void finish(const std::string& endTime, std::int64_t seconds, const std::string& verdict);

private:
    OutputFile file_;
    Format format_;
};

/// The pass/fail file: pending from the start of the run with the fail text, with the pass text
/// only after a run that passed. Switched by "@OutputPassFailText" and "@OutputPassFailXML".
class PassFailFile {
public:
    explicit PassFailFile(const Settings& settings);

    /// Removes what an earlier run left: whatever comes of this one, it does not read as a pass.
    static void removeFormer();

    /// Writes the pending file with the fail text.
    void begin();

    /// Rewrites the pending file for a run that passed.
    void pass();

    /// Whether the pending file was written and can be moved to its place.
    bool isWritten() const { return written_; }

private:
    void write(const std::string& text);

    bool enabled_;
    bool xml_;
    std::string passText_;
    std::string failText_;
    bool written_ = false;
};

/// `text` as content or attribute value of an XML document; characters that XML cannot hold become
/// question marks.
std::string xmlEscaped(const std::string& text);

}  // namespace vorn
