#include "Table.h"

#include <algorithm>
#include <vector>

namespace {

struct Row {
    WordCounts::Counter count;
    const qnStr* word;
};

bool comesBefore(const Row& a, const Row& b) { return a.count != b.count ? a.count > b.count : *a.word < *b.word; }

}  // namespace

void printTable(std::FILE* out, WordCounts& counts, unsigned top) {
    std::vector<Row> rows;
    for (WordCountsIter it(counts); it.dict != nullptr; ++it) {
        rows.push_back(Row{*static_cast<WordCounts::Counter*>(it.getValue()), static_cast<qnStr*>(it.getKey())});
    }
    std::size_t shown = std::min<std::size_t>(top, rows.size());
    std::partial_sort(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(shown), rows.end(), comesBefore);
    std::fprintf(out, "%10s  %s\n", "count", "word");
    for (std::size_t i = 0; i < shown; ++i) std::fprintf(out, "%10u  %s\n", rows[i].count, rows[i].word->text());
}
