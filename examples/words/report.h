#pragma once

#include <Kelm.h>

#include <vector>

#include "text.h"

struct Word {
    Kelm text;
    int count;
};

/// The words by falling count, those of one count in their own order.
std::vector<Word> ByCount(const WordCounts& counts);

/// A line on stdout.
void Print(const Kelm& line);

/// A line that begins a part of the output: an empty one stands before it, but not at the top.
void PrintHeading(const Kelm& line);

void PrintFiles(const std::vector<Text>& texts);

void PrintMostFrequent(std::vector<Word> words, int top);

/// Shows every place of the text where `find` occurs in any case.
void PrintHits(const Text& text, const Kelm& find);

/// Lists pairs of words of which at least this share is the same in the same order, those first
/// that look most like a misspelling.
void PrintAlike(const std::vector<Word>& byCount, const Kelm& share);
