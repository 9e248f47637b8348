"""The rules of the house, one module a subject. Each has check(tree), which yields a line for each breach."""
