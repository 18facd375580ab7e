#include <algorithm>

#include "../shared/terminal.h"
#include "report.h"

namespace {

constexpr int kShortest = 5;       // shorter words are alike too easily
constexpr int kMostWords = 6000;   // that many are compared each with each
constexpr size_t kMostPairs = 20;  // and that many pairs are shown

struct Pair {
    Word rare;
    Word frequent;
    float low;   // how much of the longer word occurs in the shorter
    float high;  // and the other way about
};

/// The pairs among words of rising length of which both ways reach the share.
std::vector<Pair> AlikePairs(const std::vector<Word>& words, double share) {
    std::vector<Pair> pairs;
    for (size_t i = 0; i < words.size(); ++i) {
        const double longest = words[i].text.GetLength() / share;  // more cannot reach the share
        for (size_t j = i + 1; j < words.size() && words[j].text.GetLength() <= longest; ++j) {
            const float low = words[j].text.Similar(words[i].text);
            if (low < static_cast<float>(share)) {
                continue;
            }
            const float high = words[i].text.Similar(words[j].text);
            const bool isRare = words[i].count <= words[j].count;
            pairs.push_back(
                {isRare ? words[i] : words[j], isRare ? words[j] : words[i], low, high});
        }
    }
    return pairs;
}

/// A misspelling is a rare word beside a frequent one, so those come first.
bool IsMoreTelling(const Pair& left, const Pair& right) {
    const long long rareLeft = 1LL * left.rare.count * right.frequent.count;
    const long long rareRight = 1LL * right.rare.count * left.frequent.count;
    return rareLeft != rareRight ? rareLeft < rareRight : left.low > right.low;
}

std::vector<Word> WordsToCompare(const std::vector<Word>& byCount) {
    std::vector<Word> words;
    for (const Word& word : byCount) {
        if (WString(word.text).GetLength() >= kShortest) {
            words.push_back(word);
        }
    }
    if (words.size() > kMostWords) {
        Complain(Kelm::FromFormat("--alike compares the %d most frequent of %d words", kMostWords,
                                  static_cast<int>(words.size())));
        words.resize(kMostWords);
    }
    std::stable_sort(words.begin(), words.end(), [](const Word& left, const Word& right) {
        return left.text.GetLength() < right.text.GetLength();
    });
    return words;
}

}  // namespace

void PrintAlike(const std::vector<Word>& byCount, const Kelm& threshold) {
    const std::vector<Word> words = WordsToCompare(byCount);
    std::vector<Pair> pairs = AlikePairs(words, threshold.Double());
    std::stable_sort(pairs.begin(), pairs.end(), IsMoreTelling);
    PrintHeading(Kelm::FromFormat("%d pairs among %d words of at least %d letters are alike by %s",
                                  static_cast<int>(pairs.size()), static_cast<int>(words.size()),
                                  kShortest, threshold.constBuffer()));
    const size_t hidden = pairs.size() - std::min(pairs.size(), kMostPairs);
    pairs.resize(pairs.size() - hidden);
    int left = Columns("Word"), right = Columns("Like");
    for (const Pair& pair : pairs) {
        left = std::max(left, Columns(pair.rare.text));
        right = std::max(right, Columns(pair.frequent.text));
    }
    Print(PadRight("Word", left) + "  Count  " + PadRight("Like", right) +
          "  Count   Alike both ways");
    for (const Pair& pair : pairs) {
        Kelm line = PadRight(pair.rare.text, left);
        line.AppendFormat("  %5d  ", pair.rare.count);
        line += PadRight(pair.frequent.text, right);
        line.AppendFormat("  %5d   %.3f  %.3f", pair.frequent.count, pair.low, pair.high);
        Print(line);
    }
    if (hidden > 0) {
        Print(Kelm::FromFormat("and %d more", static_cast<int>(hidden)));
    }
}
