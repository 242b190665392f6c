#include "driver/output_files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "report/text.h"

namespace vorn {

namespace {

const char* wordFor(const TestOutcome& outcome) {
    if (outcome.raised || outcome.result == VORN_FAIL) {
        return "FAIL";
    }
    return outcome.result == VORN_PASS ? "PASS" : "NO VERDICT";
}

std::string xmlAttribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + xmlEscaped(value) + "\"";
}

std::string xmlEnd(const std::string& verdict) {
    return "  <Verdict>" + verdict + "</Verdict>\n</VORN>\n";
}

}  // namespace

std::string xmlEscaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\n':
            case '\t':
            case '\r':
                escaped += "&#" + std::to_string(code) + ";";
                break;
            default:
                escaped += code < 0x20U ? '?' : character;
        }
    }
    return escaped;
}

void OutputFile::open(const std::string& name, Opening opening) {
    name_ = name;
    const std::string reason = openOutputStream(data_.stream, name, opening);
    sound_ = reason.empty();
    if (!sound_) {
        giveUp("open", reason);
    }
}

void OutputFile::write(const std::string& text) {
    if (sound_) {
        data_.stream << text << std::flush;
        if (!data_.stream) {
            giveUp("write", std::strerror(errno));
        }
    }
}

void OutputFile::writeProvisionally(const std::string& text) {
    if (sound_) {
        const std::streampos start = data_.stream.tellp();
        write(text);
        data_.stream.seekp(start);
    }
}

void OutputFile::giveUp(const char* action, const std::string& reason) {
    sound_ = false;
    std::cerr << "Cannot " << action << " " << name_ << " in the current directory (" << reason
              << "): its text is lost, the console has the report." << std::endl;
}

void OutputFile::close() {
    data_.stream.close();
}

ResultsFile::Format ResultsFile::formatOf(const std::string& outFileFormat) {
    if (holdsWord(outFileFormat, "TEXT")) {
        return Format::text;
    }
    return holdsWord(outFileFormat, "XML") ? Format::xml : Format::none;
}

void ResultsFile::begin(const std::string& processorLabel, const std::string& startTime) {
    if (format_ == Format::text) {
        file_.open(resultsTextFileName, Opening::replace);
        file_.write(textOf("VORN64 ", revision, "\nProcessor: ", processorLabel,
                           "\nStart: ", startTime, "\n\n"));
    } else if (format_ == Format::xml) {
        file_.open(resultsXmlFileName, Opening::replace);
        file_.write("<?xml version=\"1.0\"?>\n<VORN" + xmlAttribute("revision", revision) +
                    xmlAttribute("processor", processorLabel) + xmlAttribute("start", startTime) +
                    ">\n");
        file_.writeProvisionally(xmlEnd("INCOMPLETE"));
    }
}

void ResultsFile::add(const TestOutcome& outcome, const std::string& processors) {
    const TestRecord& record = outcome.record;
    if (format_ == Format::text) {
        file_.write(textOf("Test: ", record.name, "\nVersion: ", record.version,
                           "\nResult: ", wordFor(outcome), "\nStatus: ", record.status,
                           "\nCode: ", record.code, "\nMessage: ", record.message,
                           processors.empty() ? "" : "\nLogical processors: ", processors, "\n\n"));
    } else if (format_ == Format::xml) {
        file_.write(
            "  <Test" + xmlAttribute("name", record.name) +
            xmlAttribute("version", record.version) + xmlAttribute("result", wordFor(outcome)) +
            xmlAttribute("status", record.status) + xmlAttribute("code", record.code) +
            xmlAttribute("message", record.message) +
            (processors.empty() ? "" : xmlAttribute("logicalProcessors", processors)) + "/>\n");
        file_.writeProvisionally(xmlEnd("INCOMPLETE"));
    }
}

void ResultsFile::add(const TemperatureSample& sample) {
    if (format_ == Format::xml) {
        file_.write("  <Temperature" + xmlAttribute("time", sample.time) +
                    xmlAttribute("test", sample.test) +
                    xmlAttribute("margin", textOf(sample.margin)) + "/>\n");
        file_.writeProvisionally(xmlEnd("INCOMPLETE"));
    }
}

void ResultsFile::finish(const std::string& endTime, std::int64_t seconds,
                         const std::string& verdict) {
    if (format_ == Format::text) {
        file_.write(textOf("End: ", endTime, "\nSeconds: ", seconds, "\nVerdict: ", verdict, "\n"));
    } else if (format_ == Format::xml) {
        file_.write("  <End" + xmlAttribute("time", endTime) +
                    xmlAttribute("seconds", std::to_string(seconds)) + "/>\n" + xmlEnd(verdict));
    }
    file_.close();
}

PassFailFile::PassFailFile(const Settings& settings)
    : enabled_(isSwitchedOn(settings.outputPassFailText) ||
               isSwitchedOn(settings.outputPassFailXml)),
      xml_(isSwitchedOn(settings.outputPassFailXml)),
      passText_(settings.outputPassText.empty() ? "PASS" : settings.outputPassText),
      failText_(settings.outputFailText.empty() ? "FAIL" : settings.outputFailText) {}

void PassFailFile::removeFormer() {
    std::remove(passFailFileName);
}

void PassFailFile::begin() {
    if (enabled_) {
        write(failText_);
    }
}

void PassFailFile::pass() {
    if (enabled_) {
        write(passText_);
    }
}

void PassFailFile::write(const std::string& text) {
    TextData data;
    OutputFile file(data);
    file.open(pendingPassFailFileName, Opening::replace);
    file.write(xml_ ? "<PassFail>" + xmlEscaped(text) + "</PassFail>\n" : text + "\n");
    written_ = file.isSound();
    file.close();
}

}  // namespace vorn
