local function fib(n)
  local s = "x"
  if n < 2 then return n end
  return fib(n - 1) + fib(n - 2)
end
print(fib(30))
