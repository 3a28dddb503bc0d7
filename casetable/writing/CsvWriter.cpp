#include "casetable/writing/CsvWriter.h"

#include <string>

#include "casetable/importing/Report.h"
#include "casetable/system/Output.h"
#include "casetable/writing/CsvRecord.h"

namespace casetable {

void writeCsv(const Report& report, Output& output)
{
    output.write(csvRecord(uniqueHeader(report.columns)) + '\n');
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write(csvRecord(report.row(index).cells) + '\n');
}

} // namespace casetable
