#include "casetable/distributing/Messages.h"

#include <exception>
#include <new>
#include <utility>

#include <xxhash.h>

#include "casetable/importing/PartialBytes.h"
#include "casetable/system/Bytes.h"
#include "casetable/system/Interrupt.h"

namespace casetable {

namespace {

const std::uint32_t formVersion = 2; // Of the form of these messages.

void writeTexts(ByteWriter& writer, const std::vector<std::string>& texts)
{
    writer.number(texts.size());
    for (const std::string& text : texts)
        writer.text(text);
}

std::vector<std::string> readTexts(ByteReader& reader)
{
    std::vector<std::string> texts(reader.count(sizeof(std::uint64_t)));
    for (std::string& text : texts)
        text = reader.text();
    return texts;
}

void writeReport(ByteWriter& writer, const PieceReport& report)
{
    writeTexts(writer, report.warnings);
    writer.number(report.hiddenLeftOut);
    writer.number(report.pathCount);
    writer.flag(report.oddities.hasByteOrderMark);
    writer.flag(report.oddities.allEndInReturn);
    writer.flag(report.oddities.anyQuoted);
    writeTexts(writer, report.edges.folders);
    writeTexts(writer, report.edges.files);
    writer.text(report.edges.last);
}

PieceReport readReport(ByteReader& reader)
{
    PieceReport report;
    report.warnings = readTexts(reader);
    report.hiddenLeftOut = reader.number();
    report.pathCount = reader.number();
    report.oddities.hasByteOrderMark = reader.flag();
    report.oddities.allEndInReturn = reader.flag();
    report.oddities.anyQuoted = reader.flag();
    report.edges.folders = readTexts(reader);
    report.edges.files = readTexts(reader);
    report.edges.last = reader.text();
    return report;
}

void writeSights(ByteWriter& writer, const std::vector<Sight>& sights)
{
    writer.number(sights.size());
    for (const Sight& sight : sights) {
        writer.text(sight.path);
        writer.number(sight.hash);
    }
}

void writeOptional(ByteWriter& writer, const std::optional<std::size_t>& number)
{
    writer.flag(number.has_value());
    writer.number(number.value_or(0));
}

std::optional<std::size_t> readOptional(ByteReader& reader)
{
    const bool isThere = reader.flag();
    const std::uint64_t number = reader.number();
    return isThere ? std::optional<std::size_t>(number) : std::nullopt;
}

} // namespace

void Ready::write(ByteWriter& writer) const
{
    writer.heading("casetable-mpi", formVersion);
    writer.text(version);
    writer.text(machine);
    writer.number(options);
    writer.number(pieces);
    writer.number(sights);
}

void Ready::read(ByteReader& reader)
{
    reader.heading("casetable-mpi", formVersion);
    version = reader.text();
    machine = reader.text();
    options = reader.number();
    pieces = reader.number();
    sights = reader.number();
}

void Sights::write(ByteWriter& writer) const
{
    writer.text(machine);
    writeSights(writer, sights);
}

void Sights::read(ByteReader& reader)
{
    machine = reader.text();
    sights.resize(reader.count(2 * sizeof(std::uint64_t)));
    for (Sight& sight : sights) {
        sight.path = reader.text();
        sight.hash = reader.number();
    }
}

std::uint64_t hashOf(Options options)
{
    options.jobs.reset();
    options.source.root.clear();
    std::string text;
    for (const std::string& argument : arguments(options))
        (text += argument) += '\0';
    return XXH3_64bits(text.data(), text.size());
}

std::uint64_t hashOf(const std::vector<Sight>& sights)
{
    ByteWriter writer;
    writeSights(writer, sights);
    const std::string bytes = writer.take();
    return XXH3_64bits(bytes.data(), bytes.size());
}

void Begin::write(ByteWriter& writer) const
{
    writer.flag(showsRemarks);
    writer.flag(showsProgress);
}

void Begin::read(ByteReader& reader)
{
    showsRemarks = reader.flag();
    showsProgress = reader.flag();
}

void Listed::write(ByteWriter& writer) const
{
    writer.number(piece);
    writeReport(writer, report);
}

void Listed::read(ByteReader& reader)
{
    piece = reader.number();
    report = readReport(reader);
}

void Seen::write(ByteWriter& writer) const
{
    writer.number(folders);
    writer.number(files);
}

void Seen::read(ByteReader& reader)
{
    folders = reader.number();
    files = reader.number();
}

void Failed::write(ByteWriter& writer) const
{
    writeOptional(writer, piece);
    writeReport(writer, report);
    writer.byte(static_cast<unsigned char>(code));
    writer.text(message);
    writer.text(excerpt);
    writer.number(static_cast<std::uint64_t>(signal));
    writer.text(machine);
}

void Failed::read(ByteReader& reader)
{
    piece = readOptional(reader);
    report = readReport(reader);
    code = static_cast<ExitCode>(reader.byte());
    message = reader.text();
    excerpt = reader.text();
    signal = static_cast<int>(reader.number());
    machine = reader.text();
}

Failed presentFailure()
{
    Failed failed;
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const Failure& failure) {
        failed.code = failure.code;
        failed.message = failure.what();
        failed.excerpt = failure.excerpt;
    } catch (const Interrupted& interrupted) {
        failed.signal = interrupted.signal;
    } catch (const std::bad_alloc&) {
        failed.message = "not enough memory";
    } catch (const std::exception& failure) {
        failed.message = failure.what();
    }
    return failed;
}

std::string resultMessage(ImportedFiles&& files, const Selection& selection)
{
    const ImportedFiles written = std::move(files);
    ByteWriter writer;
    writer.byte(static_cast<unsigned char>(MessageKind::Result));
    writePartial(writer, written.partial);
    written.tally.write(writer);
    writer.number(selection.excluded.size());
    for (const Glob& glob : selection.excluded)
        writer.flag(glob.hasMatched());
    return writer.take();
}

void mergeResult(ByteReader& reader, const Options& options, ImportedFiles& all)
{
    mergePartial(reader, options.reading.patterns().size(), options.identifiers.size(),
                 all.partial);
    Tally tally(options.reading);
    tally.read(reader);
    all.tally.merge(std::move(tally));
    const std::vector<Glob>& globs = options.source.selection.excluded;
    if (reader.count(1) != globs.size())
        throw BrokenBytes("a result is of another selection");
    for (const Glob& glob : globs) {
        if (reader.flag())
            glob.noteMatch();
    }
    reader.end();
}

template <class Content> std::string messageOf(MessageKind kind, const Content& content)
{
    ByteWriter writer;
    writer.byte(static_cast<unsigned char>(kind));
    content.write(writer);
    return writer.take();
}

template std::string messageOf(MessageKind kind, const Ready& content);
template std::string messageOf(MessageKind kind, const Sights& content);
template std::string messageOf(MessageKind kind, const Begin& content);
template std::string messageOf(MessageKind kind, const Listed& content);
template std::string messageOf(MessageKind kind, const Seen& content);
template std::string messageOf(MessageKind kind, const Failed& content);

std::string messageOf(MessageKind kind)
{
    return std::string(1, static_cast<char>(kind));
}

std::string pieceMessage(std::optional<std::size_t> piece)
{
    ByteWriter writer;
    writer.byte(static_cast<unsigned char>(MessageKind::Piece));
    writeOptional(writer, piece);
    return writer.take();
}

std::optional<std::size_t> readPiece(ByteReader& reader)
{
    return readOptional(reader);
}

} // namespace casetable
