#pragma once

class Report;
class Surroundings;

/// What the program writes in a minute, hidden, while nothing is counted and while traffic flows:
/// `rounds` periods of `seconds` of each.
void measureWrites(Surroundings &surroundings, Report &report, int rounds, int seconds);
