"""The pages of the study: its texts, study.md.in and advice.md.in, with what stands in {{ }} worked out."""
import math
import re
import statistics

OURS = "format 2.0"
FORMATS = ["format 2.0", "format 1.6", "format 1.5", "format 1.4", "format 1.2", "format 1.1", "format 1.0"]
OTHERS = ["vote of 70 %", "system UUID", "UUID and disk", "board serial", "machine id", "five parts",
          "first address", "all addresses"]
RULES = FORMATS + OTHERS

# For 95 in 100, by degrees of freedom.
STUDENT = {1: 12.71, 2: 4.30, 3: 3.18, 4: 2.78, 5: 2.57, 6: 2.45, 7: 2.36, 8: 2.31, 9: 2.26}


class Estimate:
    """Mean over fleets, in 100, and half the width of its interval."""

    def __init__(self, values):
        self.mean = statistics.fmean(values)
        self.half = STUDENT[len(values) - 1] * statistics.stdev(values) / math.sqrt(len(values))

    def __str__(self):
        return f"{self.mean:.1f} ± {self.half:.1f}"

    def above(self, other):
        """Whether the intervals are apart, by one in 100 at least."""
        return self.mean - self.half > other.mean + other.half and self.mean - other.mean >= 1


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


class Pages:
    def __init__(self, results, parameters):
        self.results = results
        self.parameters = parameters["parameters"]
        self.sources = parameters["sources"]
        self.names = parameters["populations"]

    # Estimates

    def kept(self, population, rule=OURS, years=3):
        return Estimate([100 * fleet["rules"][rule][0][years - 1] / fleet["machines"]
                         for fleet in self.results["base"][population]])

    def back(self, population, rule=OURS):
        return Estimate([100 * fleet["rules"][rule][1] / fleet["machines"]
                         for fleet in self.results["base"][population]])

    def own(self, population, rule=OURS):
        return Estimate([100 * fleet["rules"][rule][2] / (fleet["machines"] + fleet["copies"])
                         for fleet in self.results["base"][population]])

    def none(self, population, rule=OURS):
        return Estimate([100 * fleet["rules"][rule][4] / fleet["machines"]
                         for fleet in self.results["base"][population]])

    def own_copies(self, population, rule=OURS):
        fleets = self.results["base"][population]
        copies = sum(fleet["copies"] for fleet in fleets)
        return f"{100 * sum(fleet['rules'][rule][3] for fleet in fleets) / copies:.0f}" if copies else ""

    def mean(self, estimate):
        return f"{estimate.mean:.1f}"

    def round(self, estimate):
        return f"{estimate.mean:.0f}"

    def mean_shared(self, population, rule=OURS):
        return f"{100 - self.own(population, rule).mean:.0f}"

    def runs(self):
        return self.results["sizes"]["runs"]

    def fleet(self):
        return f"{self.results['sizes']['machines']:,}"

    def sizes(self, what):
        return self.results["sizes"][what]

    def machines(self):
        return sum(fleet["machines"] for fleet in next(iter(self.results["base"].values())))

    # Where ours is worse

    def beaten_by(self, wanted, rules=tuple(OTHERS)):
        """Rules, with the populations in which they are better in the way that `wanted` asks for."""
        found = []
        for rule in rules:
            where = []
            for population in self.names:
                stabler = self.kept(population, rule).above(self.kept(population))
                less = self.kept(population).above(self.kept(population, rule))
                shared = self.own(population).above(self.own(population, rule))
                apart = self.own(population, rule).above(self.own(population))
                better = {"both": stabler and not shared, "stable": stabler and shared,
                          "distinct": apart and less}[wanted]
                if better:
                    where.append(f"{self.names[population]} ({self.both(population, rule)})")
            if where:
                found.append(f"**{rule}** in {', '.join(where)}")
        return "; ".join(found) or "none"

    def both(self, population, rule=OURS):
        return f"{self.kept(population, rule).mean:.0f} / {self.own(population, rule).mean:.0f}"

    def ours(self):
        return ", ".join(f"{name} {self.both(population)}" for population, name in self.names.items())

    def older_formats(self):
        return self.beaten_by("both", FORMATS[1:]), self.beaten_by("stable", FORMATS[1:])

    # Tables

    def summary(self):
        rows = [[f"**{rule}**" if rule == OURS else rule] +
                [self.both(population, rule) for population in self.names] for rule in RULES]
        return table(["rule", *self.names.values()], rows)

    def details(self):
        parts = []
        for population, name in self.names.items():
            rows = [[rule, *(self.kept(population, rule, year) for year in (1, 2, 3)),
                     self.mean(self.back(population, rule)), self.own(population, rule),
                     self.own_copies(population, rule), self.mean(self.none(population, rule))]
                    for rule in RULES]
            head = ["rule", "kept 1 year", "2 years", "3 years", "has it at the end", "own id",
                    "of the copies", "has none"]
            parts.append(f"### {name[0].upper() + name[1:]}\n\n{table(head, rows)}")
        return "\n\n".join(parts)

    def losses(self):
        rows = []
        for population, losses in self.results["losses"].items():
            causes = [(count, cause) for cause, count in losses.items() if cause != "by order"]
            all_losses = sum(count for count, _ in causes)
            for count, cause in sorted(causes, key=lambda item: (-item[0], item[1]))[:5]:
                rows.append([self.names[population], cause, f"{1000 * count / self.machines():.1f}",
                             f"{100 * count / all_losses:.0f}"])
        return table(["population", "what had changed", "lost of 1,000 in three years", "in 100 losses"],
                     rows)

    def lost(self, population, wanted):
        """Losses of 1,000 machines in three years that `wanted` picks by their causes."""
        losses = self.results["losses"][population]
        count = sum(number for cause, number in losses.items() if cause != "by order" and wanted(cause))
        return 1000 * count / self.machines()

    def pairs(self):
        rows = []
        for population, name in self.names.items():
            both = self.lost(population, lambda cause: " + " in cause)
            all_losses = self.lost(population, lambda cause: True)
            by_order = 1000 * self.results["losses"][population]["by order"] / self.machines()
            rows.append([name, f"{all_losses:.1f}", f"{both:.1f}", f"{by_order:.1f}"])
        return table(["population", "lost of 1,000", "two or more causes", "by the order of values alone"],
                     rows)

    def kinds(self):
        texts = {"own": "a number of its own", "none": "nothing that counts", "text": "a text that counts"}
        rows = []
        for population in ("desktops", "home", "virtual"):
            kinds = self.results["kinds"][population].items()
            for kind, numbers in sorted(kinds, key=lambda item: (-item[1]["machines"], item[0])):
                if numbers["machines"] * 50 < self.machines():
                    continue
                product, board = (texts[part] for part in kind.split(", "))
                shares = [f"{100 * numbers[count] / numbers['machines']:.1f}" for count in ("kept", "own")]
                rows.append([self.names[population], product, board, *shares])
        return table(["population", "product says", "board says", "kept 3 years", "own id"], rows)

    def order(self):
        scripts = self.results["scripts"]
        word = {True: "same id", False: "**new id**"}
        rows = [[part, word[scripts["changed"][part]], word[scripts["gone"][part]]]
                for part in ("volume", "product", "board", "network")]
        return table(["of four values, this one", "has changed", "can no longer be read"], rows)

    def placeholders(self):
        scripts = self.results["scripts"]["placeholders"]
        text = {"PF0XYZ": "a serial number", "Default string": "\"Default string\", which counts as a value",
                "To be filled by O.E.M.": "\"To be filled by O.E.M.\", which does not"}
        rows = [[said, f"{scripts[product]} of 3"] for product, said in text.items()]
        return table(["the product says", "of the other three parts, so many can change"], rows)

    def of_100(self, counts, what):
        kept, _, own, _, _ = counts["rules"][OURS]
        if what == "kept":
            return 100 * kept[2] / counts["machines"]
        return 100 * own / (counts["machines"] + counts["copies"])

    def ranges(self):
        def amount(name, value):
            return f"{100 * value:.3g}" + (" a year" if "a year" in self.parameters[name]["what"] else "")

        found = {}
        for population, name, value, counts, _ in self.results["ranges"]:
            found.setdefault((population, name), []).append((value, counts))
        rows = []
        for (population, name), ends in found.items():
            (low, at_low), (high, at_high) = ends
            kept = [self.of_100(counts, "kept") for counts in (at_low, at_high)]
            own = [self.of_100(counts, "own") for counts in (at_low, at_high)]
            what = self.parameters[name]["what"].removesuffix(", a year")
            rows.append((max(abs(kept[1] - kept[0]), abs(own[1] - own[0])),
                         [self.names[population], what,
                          f"{amount(name, low)} to {amount(name, high)}",
                          f"{kept[0]:.0f} to {kept[1]:.0f}", f"{own[0]:.0f} to {own[1]:.0f}"]))
        rows = [row for _, row in sorted(rows, key=lambda row: (-row[0], row[1]))[:16]]
        return table(["population", "assumption", "from, to, in 100", "kept 3 years", "own id"], rows)

    def habits(self):
        found = {}
        for population, habit, counts in self.results["habits"]:
            found.setdefault(habit, {})[population] = counts
        populations = list(next(iter(found.values())))
        rows = [[habit, *(f"{self.of_100(played[population], 'kept'):.1f} / "
                          f"{self.of_100(played[population], 'own'):.1f}" for population in populations)]
                for habit, played in found.items()]
        return table(["the host asks", *(self.names[population] for population in populations)], rows)

    def first_year(self):
        rows = [[name, *(f"{1000 - 10 * self.kept(population, rule, 1).mean:.0f}"
                         for rule in (OURS, "vote of 70 %"))] for population, name in self.names.items()]
        return table(["population", "with format 2.0", "that the vote does not find again either"], rows)

    def birthdays(self):
        space = 2 ** 31
        rows = []
        for machines in (1_000, 10_000, 54_563, 100_000, 1_000_000):
            any_two = 1 - math.exp(-machines * (machines - 1) / 2 / space)
            sharing = machines * (1 - math.exp(-(machines - 1) / space))
            chance = f"{100 * any_two:.2f}" if any_two < 0.999 else "100"
            rows.append([f"{machines:,}", chance, f"{sharing:.3g}"])
        return table(["machines with a random id", "chance in 100 that two share one", "machines that share"],
                     rows)

    def of_basis(self, wanted):
        """Parameters from a "source", assumed with a source "near", or assumed with "none"."""
        def basis(parameter):
            if parameter["basis"] != "assumed":
                return "source"
            return "near" if "source" in parameter else "none"
        return [parameter for parameter in self.parameters.values() if basis(parameter) == wanted]

    def count(self, wanted):
        return len(self.of_basis(wanted))

    def basis(self, wanted):
        rows = []
        for parameter in self.of_basis(wanted):
            unit = 1 if parameter["what"].startswith("number of") else 100
            values = [f"{unit * parameter[population]:.3g}" if population in parameter else ""
                      for population in self.names]
            source = [f"{parameter['basis']}, [{parameter['source']}]: {parameter['note']}"] \
                if wanted != "none" else []
            low, high = parameter.get("range", ("", ""))
            varied = [] if wanted == "source" else [f"{low} to {high}" if parameter.get("range") else ""]
            rows.append([parameter["what"], *values, *source, *varied])
        head = ["", *self.names.values()] + ([] if wanted == "none" else ["source"]) + \
            ([] if wanted == "source" else ["varied"])
        return table(head, rows)

    def source_list(self):
        rows = [[f"[{name}]", source["what"], source["year"]] for name, source in self.sources.items()]
        return table(["", "source", "figures of"], rows)


def render(results, parameters, folder):
    """The pages by name."""
    found = Pages(results, parameters)
    names = {name: getattr(found, name) for name in dir(found) if not name.startswith("_")}
    return {f"{page}.md": re.sub(r"\{\{(.+?)\}\}", lambda part: str(eval(part[1], names)),
                                 (folder / f"{page}.md.in").read_text())
            for page in ("study", "advice")}
