#pragma once

class Report;

/// What the list of interfaces costs beside the kernel's dump alone, on a machine with as many
/// links as thousands of containers give it. The links stay in the network that the benchmark has
/// entered.
void measureLinks(Report &report, int runs);
