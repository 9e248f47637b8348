"""The rules of the project: a module per subject, with check(tree) that yields a line per breach; and two helpers."""
