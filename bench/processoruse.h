#pragma once

class Report;
class Surroundings;

/// What the program takes of the processor and how often it wakes, shown and hidden, beside what
/// the desktops' own monitors do: `rounds` periods of `seconds` each, every program by itself.
void measureProcessor(Surroundings &surroundings, Report &report, int rounds, int seconds);
