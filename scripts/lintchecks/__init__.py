"""The rules of the project, one module a subject. Each has check(tree), which yields a line for each breach."""
