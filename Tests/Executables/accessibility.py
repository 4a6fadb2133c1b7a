"""What axe-core finds on a page against the Web Content Accessibility Guidelines, level AA, and good practice."""

from pathlib import Path

import pytest

JUDGE = Path("/usr/local/lib/node_modules/axe-core/axe.min.js")
RULES = ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"]


def need_judge():
    if not JUDGE.exists():
        pytest.skip("axe-core is not installed (scripts/setup --developer)")


async def violations(page):
    """Of each rule that is broken, its name, where, and why."""
    if not await page.ask("'axe' in window"):
        await page.ask(f"{JUDGE.read_text()}; null")
    judged = await page.ask(
        f"axe.run({{ runOnly: {RULES}, resultTypes: ['violations'] }}).then(found => [found.passes.length,"
        "found.violations.flatMap(rule => rule.nodes.map(one => [rule.id, one.target.join(' '), one.failureSummary]))])")
    passed, found = judged
    assert passed > 10, "it has looked at next to nothing"
    return found
