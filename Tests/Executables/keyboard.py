"""A person at the page who has a keyboard and nothing else."""

NAME = """(one => one.ariaLabel || document.getElementById(one.getAttribute('aria-labelledby'))?.textContent
    || one.labels?.[0]?.textContent.trim() || one.textContent.trim())"""

FOCUSED = f"""(() => {{
    let one = document.activeElement, root = document;
    while (one?.shadowRoot?.activeElement) [one, root] = [one.shadowRoot.activeElement, one.shadowRoot];
    if (one === document.body) return null;
    const box = one.getBoundingClientRect(), style = getComputedStyle(one);
    const above = root.elementFromPoint(box.left + box.width / 2, box.top + Math.min(box.height / 2, 20));
    return {{ name: {NAME}(one),
             hasRing: one.matches(':focus-visible') && style.outlineStyle !== 'none' && parseFloat(style.outlineWidth) >= 2
                 && style.opacity === '1',
             isCovered: above === null || !(one.contains(above) || above.contains(one) && above !== document.body
                 || one.labels?.[0]?.contains(above)) }};
}})()"""

# What a person can get to, in the order in which it is read.
REACHABLE = f"""[...document.querySelectorAll('button, input, summary, a[href], [tabindex="0"]')]
    .filter(one => !one.disabled && one.checkVisibility()).map({NAME})"""


async def focused(page):
    """The name of what has the focus, which is to be seen; absent where nothing has."""
    await page.drawn()
    found = await page.ask(FOCUSED)
    if found is None:
        return None
    assert found["hasRing"] and not found["isCovered"], found
    return found["name"]


async def step(page, back=False):
    await page.key("Tab", shift=back)
    return await focused(page)


async def walk_to(page, name, back=False):
    passed = []
    while (here := await step(page, back)) != name:
        passed.append(here)
        assert len(passed) < 100, f"{name} is not among {passed}"
