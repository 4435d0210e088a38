def fib(n):
    if n < 2:
        return n
    r = fib(n - 1) + fib(n - 2)
    return r
print(fib(30))
